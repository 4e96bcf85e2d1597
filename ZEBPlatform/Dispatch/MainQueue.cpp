#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Dispatch/MainQueuePrivate.h>
#include <ZEBPlatform/Dispatch/QueueFramePrivate.h>
#include <ZEBPlatform/Dispatch/detail/BlockingWait.h>
#include <ZEBPlatform/Dispatch/detail/MainQueue.h>
#include <ZEBPlatform/Linux/detail/Thread.h>

#include <exception>

namespace zeb {

namespace detail {

namespace {

/// After this many blocks the run loop serves its timers and sources again.
constexpr int maxItemsPerTurn = 256;

/// A block that another thread waits for.
class SyncItem final : public WorkItem {
 public:
  SyncItem(const DispatchQueue& queue, FunctionView<void()> block) noexcept
      : WorkItem(&operate), queue_(queue), block_(block), outer_(QueueFrame::innermost()) {}

  void waitUntilDone() {
    waitUntilOpen(gate_);
    if (exception_) std::rethrow_exception(exception_);
  }

 private:
  static void operate(WorkItem& item, Operation operation) noexcept {
    auto& self = static_cast<SyncItem&>(item);
    if (operation == Operation::run) {
      QueueFrame frame(self.queue_, QueueFrame::Access::exclusive, self.outer_);
      try {
        self.block_();
      } catch (...) {
        self.exception_ = std::current_exception();
      }
    } else if (operation == Operation::dispose) {
      self.gate_.open();
    }
  }

  const DispatchQueue& queue_;
  const FunctionView<void()> block_;
  const QueueFrame* const outer_;
  std::exception_ptr exception_;
  ThreadGate gate_;
};

MainQueue& mainQueue() {
  // The reference count never reaches zero, because nothing releases its initial reference.
  static NeverDestroyed<MainQueue> queue;
  return *queue;
}

}  // namespace

MainQueue::MainQueue() : SerialQueue("main-thread", Urgency::userInteractive) {}

void MainQueue::schedule() noexcept {
  isReady_.store(true);
  if (auto* const wake = wake_.load()) wake();
}

void MainQueue::setWaker(void (*wake)()) {
  wake_.store(wake);
  if (wake && isReady_.load()) wake();
}

bool MainQueue::runItemsOnMainThread() noexcept {
  // Cleared before the items run: as soon as the last one is done, a producer may set it again.
  if (!isReady_.exchange(false)) return false;
  if (!runItems(maxItemsPerTurn)) return false;
  isReady_.store(true);
  return true;
}

void MainQueue::sync(FunctionView<void()> block) {
  if (isMainThread() || QueueFrame::find(*this)) reportDeadlock("dispatch_sync", *this);
  SyncItem item(*this, block);
  async(item);
  item.waitUntilDone();
}

void setMainQueueWaker(void (*wake)()) { mainQueue().setWaker(wake); }

bool runMainQueue() { return mainQueue().runItemsOnMainThread(); }

}  // namespace detail

const dispatch_queue_t& dispatch_get_main_queue() {
  static const detail::NeverDestroyed<dispatch_queue_t> queue(&detail::mainQueue());
  return *queue;
}

}  // namespace zeb
