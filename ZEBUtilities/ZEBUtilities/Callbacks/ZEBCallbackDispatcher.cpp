#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Memory/detail/ObjectExtras.h>
#include <ZEBPlatform/Runtime/BlockConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBUtilities/Callbacks/CallbackTablePrivate.h>
#include <ZEBUtilities/Callbacks/ZEBCallbackDispatcher.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>

#include <string>
#include <utility>
#include <vector>

namespace zeb {

namespace {

const dispatch_queue_t& accessQueue() {
  static const detail::NeverDestroyed<dispatch_queue_t> queue(
      dispatch_queue_create(std::string(ZEBUtilitiesIdentifierPrefix) + ".ZEBCallbackDispatcher",
                            DispatchQueueKind::concurrent));
  return *queue;
}

/// Makes the change of the table when its turn comes, and has its garbage released outside the
/// access queue.
template <class Change>
void submit(const Ref<detail::CallbackTable>& table, Change change) {
  table->changeBegins();
  dispatch_barrier_async(accessQueue(), [table, change = std::move(change)]() mutable {
    Ref<NSObject> garbage = change(*table);
    table->changeEnded();
    if (!garbage) return;
    dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT),
                   [garbage = std::move(garbage)] {});
  });
}

}  // namespace

ZEBCallbackDispatcher::ZEBCallbackDispatcher()
    : observerToBlocksTable_(makeRef<detail::CallbackTable>()) {}

ZEBCallbackDispatcher::~ZEBCallbackDispatcher() { observerToBlocksTable_->close(); }

void ZEBCallbackDispatcher::addObserver(const Ref<NSObject>& observer, CallbackBlock block) {
  if (!observer || !block) return;
  submit(observerToBlocksTable_,
         [owner = &detail::ObjectExtras::of(*observer), weak = WeakRef<NSObject>(observer),
          block = std::move(block)](detail::CallbackTable& table) mutable {
           return table.add(owner, weak, std::move(block));
         });
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
  const void* owner = detail::ObjectExtras::ifAny(*observer);
  if (!owner) return;
  submit(observerToBlocksTable_,
         [owner](detail::CallbackTable& table) { return table.remove(owner); });
}

// The user info is a copy of the caller's, which blocks may change or destroy.
void ZEBCallbackDispatcher::fireWithUserInfo(Value userInfo) {
  detail::CallbackTable::List list = observerToBlocksTable_->listWithoutWaiting();
  if (!list) dispatch_sync(accessQueue(), [&] { list = observerToBlocksTable_->list(); });
  // The blocks of observers that have died by now are left out. Those of observers that die from
  // here on are called, because they count as collected.
  bool areAllAlive = true;
  for (const detail::Callback& callback : *list) areAllAlive &= callback.observer.isAlive();
  if (areAllAlive) {
    for (const detail::Callback& callback : *list) callback.block(userInfo);  // may destroy this
    return;
  }
  submit(observerToBlocksTable_, [](detail::CallbackTable& table) { return table.removeDead(); });
  std::vector<const CallbackBlock*> blocks;
  for (const detail::Callback& callback : *list) {
    if (callback.observer.isAlive()) blocks.push_back(&callback.block);
  }
  for (const CallbackBlock* block : blocks) (*block)(userInfo);
}

Class* ZEBCallbackDispatcher::runtimeClass() {
  using Self = ZEBCallbackDispatcher;
  static Class* const cls = registerClass(
      "ZEBCallbackDispatcher",
      {
          classMethod("init", [] { return makeRef<Self>(); }),
          classMethod("new", [] { return makeRef<Self>(); }),
          method("addObserver:usingBlock:",
                 [](Self& self, const Ref<NSObject>& observer, const CallbackBlock& block) {
                   self.addObserver(observer, block);
                 }),
          method("addObserver:selector:",
                 [](Self& self, const Ref<NSObject>& observer, SEL selector) {
                   self.addObserver(observer, selector);
                 }),
          method("removeObserver:", &Self::removeObserver),
          method("fire", &Self::fire),
          method("fireWithUserInfo:", &Self::fireWithUserInfo),
      });
  return cls;
}

}  // namespace zeb
