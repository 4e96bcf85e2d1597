#include <Dispatch/DispatchQueue.h>
#include <Runtime/Send.h>
#include <ZEBUtilities/CallbackTablePrivate.h>
#include <ZEBUtilities/ZEBCallbackDispatcher.h>
#include <ZEBUtilities/ZEBUtilitiesConstants.h>

#include <algorithm>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace zeb {

namespace {

const dispatch_queue_t& accessQueue() {
  // Never destroyed: dispatchers are used until the end of the process.
  static const auto& queue = *new dispatch_queue_t(
      dispatch_queue_create(std::string(ZEBUtilitiesIdentifierPrefix) + ".ZEBCallbackDispatcher",
                            DispatchQueueKind::concurrent));
  return queue;
}

/// Makes the change when its turn comes, and has what it leaves over released outside the access queue.
template <class Change>
void submit(Change change) {
  dispatch_barrier_async(accessQueue(), [change = std::move(change)]() mutable {
    if (Ref<NSObject> garbage = change()) {
      dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT),
                     [garbage = std::move(garbage)] {});
    }
  });
}

}  // namespace

ZEBCallbackDispatcher::ZEBCallbackDispatcher()
    : observerToBlocksTable_(makeRef<detail::CallbackTable>()) {}

ZEBCallbackDispatcher::~ZEBCallbackDispatcher() { observerToBlocksTable_->close(); }

void ZEBCallbackDispatcher::addObserver(const Ref<NSObject>& observer, CallbackBlock block) {
  if (!observer || !block) return;
  submit(
      [table = observerToBlocksTable_, address = observer.get(), weak = WeakRef<NSObject>(observer),
       block = std::move(block)]() mutable { return table->add(address, weak, std::move(block)); });
}

void ZEBCallbackDispatcher::addObserver(const Ref<NSObject>& observer, SEL selector) {
  if (!observer || !selector) return;
  addObserver(observer,
              CallbackBlock([weak = WeakRef<NSObject>(observer), selector](const Value& userInfo) {
                if (const Ref<NSObject> alive = weak.lock())
                  performSelector(alive, selector, userInfo);
              }));
}

void ZEBCallbackDispatcher::removeObserver(const Ref<NSObject>& observer) {
  if (!observer) return;
  submit([table = observerToBlocksTable_, address = observer.get()] {
    return table->remove(address);
  });
}

// The user info is a copy of the caller's, which blocks may change or destroy.
void ZEBCallbackDispatcher::fireWithUserInfo(Value userInfo) {
  Ref<detail::CallbackList> list;
  dispatch_sync(accessQueue(), [&] { list = observerToBlocksTable_->list(); });
  // Who has died by now is left out; who dies from here on is called, as the blocks count as collected.
  const auto callbacks = std::span(list->callbacks);
  const auto firstDead =
      std::ranges::find_if_not(callbacks, &detail::CallbackList::Callback::isAlive);
  if (firstDead == callbacks.end()) {
    for (const auto& callback : callbacks) callback.block(userInfo);  // may destroy this dispatcher
    return;
  }
  submit([table = observerToBlocksTable_] { return table->removeDead(); });
  std::vector<const CallbackBlock*> blocks;
  for (const auto& callback : callbacks) {
    if (callback.isAlive()) blocks.push_back(&callback.block);
  }
  for (const CallbackBlock* block : blocks) (*block)(userInfo);
}

}  // namespace zeb
