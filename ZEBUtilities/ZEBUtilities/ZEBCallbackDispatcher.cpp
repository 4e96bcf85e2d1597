#include <Dispatch/DispatchQueue.h>
#include <Runtime/Send.h>
#include <ZEBUtilities/CallbackTablePrivate.h>
#include <ZEBUtilities/ZEBCallbackDispatcher.h>
#include <ZEBUtilities/ZEBUtilitiesConstants.h>

#include <string>
#include <utility>

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

void ZEBCallbackDispatcher::fireWithUserInfo(const Value& userInfo) {
  Ref<detail::CallbackList> list;
  dispatch_sync(accessQueue(), [&] { list = observerToBlocksTable_->list(); });
  // From here on a block may destroy this dispatcher.
  bool foundDead = false;
  for (const detail::CallbackList::Callback& callback : list->callbacks) {
    if (callback.observer.isAlive()) {
      callback.block(userInfo);
    } else {
      foundDead = true;
    }
  }
  if (!foundDead) return;
  if (const Ref<detail::CallbackTable> table = list->table.lock()) {
    submit([table] { return table->removeDead(); });
  }
}

}  // namespace zeb
