#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Linux/detail/Thread.h>
#include <ZEBPlatform/Operations/CurrentOperationPrivate.h>
#include <ZEBPlatform/Operations/NSOperation.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace zeb {

/// Looks for an operation that cannot finish before the calling thread continues, among the awaited
/// operations and everything that they depend on.
class NSOperation::WaitCheck {
 public:
  WaitCheck() : isOnMainThread_(isMainThread()) {}

  /// Whether the calling thread can hold up any operation. Usually not, and then there is nothing
  /// to search.
  bool isNeeded() const {
    return detail::CurrentOperation::innermost() ||
           (isOnMainThread_ && NSOperationQueue::mainQueue()->operationCount() > 0);
  }

  /// The operation that is held up, or nil.
  Ref<NSOperation> findHeldUp(std::vector<Ref<NSOperation>> awaited) {
    for (const Ref<NSOperation>& operation : awaited) {
      if (operation->isHeldUpBy(*this, true)) return operation;
    }
    std::unordered_set<const NSOperation*> seen;
    std::vector<Ref<NSOperation>>
        visited;  // the last reference to an operation may be one of these
    while (!awaited.empty()) {
      const Ref<NSOperation> operation = visited.emplace_back(std::move(awaited.back()));
      awaited.pop_back();
      if (operation->isReady()) continue;
      for (Ref<NSOperation>& dependency : operation->dependenciesWithout(finishedFlag)) {
        if (!seen.insert(dependency.get()).second) continue;
        if (dependency->isHeldUpBy(*this, false)) return dependency;
        awaited.push_back(std::move(dependency));
      }
    }
    return nullptr;
  }

  bool isOnMainThread() const noexcept { return isOnMainThread_; }

 private:
  const bool isOnMainThread_;
};

/// Whether the operation needs the calling thread: to be run by it, or to return from it first.
bool NSOperation::isHeldUpBy(const WaitCheck& caller, bool isAwaitedItself) const {
  if (isFinished()) return false;
  const NSOperationQueue* queue = flags() & enqueuedFlag ? queue_ : nullptr;
  if (caller.isOnMainThread() && queue && queue->isMain_ && !isExecuting()) return true;
  for (auto* current = detail::CurrentOperation::innermost(); current; current = current->outer()) {
    // An asynchronous operation may go on elsewhere while its `main` waits.
    const bool mustReturnFirst = !current->operation.isAsynchronous();
    if (&current->operation == this && (isAwaitedItself || mustReturnFirst)) return true;
    if (queue && current->queue == queue && !isExecuting() && mustReturnFirst &&
        queue->maxConcurrentOperationCount() == 1) {
      return true;
    }
  }
  return false;
}

void NSOperation::requireThatWaitingCanEnd(FunctionView<std::vector<Ref<NSOperation>>()> awaited,
                                           const NSObject& what) {
  WaitCheck check;
  if (!check.isNeeded()) return;
  const auto operations = awaited();
  const Ref<NSOperation> heldUp = check.findHeldUp(operations);
  if (!heldUp) return;
  NSString text =
      NSString::stringWithFormat("waiting here for %s would never end", what.description());
  if (std::ranges::find(operations, heldUp) == operations.end()) {
    text = NSString::stringWithFormat("%@: it waits for %s, for which this thread is needed", text,
                                      heldUp->description());
  }
  throw NSException(NSGenericException, text);
}

void NSOperation::waitUntilFinished() {
  if (isFinished()) return;
  requireThatWaitingCanEnd([this] { return std::vector{Ref(this)}; }, *this);
  const dispatch_semaphore_t finished = dispatch_semaphore_create(0);
  {
    const detail::LockGuard guard(lock_);
    if (isFinished()) return;
    waiters_.push_back(finished);
  }
  dispatch_semaphore_wait(finished, DISPATCH_TIME_FOREVER);
}

}  // namespace zeb
