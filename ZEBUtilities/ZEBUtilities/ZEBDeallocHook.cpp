#include <ZEBUtilities/ZEBDeallocHook.h>

#include <utility>

namespace zeb {

ZEBDeallocHook::ZEBDeallocHook(Block<void()> callback) noexcept : callback_(std::move(callback)) {}

ZEBDeallocHook::~ZEBDeallocHook() {
  if (callback_) callback_();
}

void ZEBDeallocHook::attachTo(const Ref<NSObject>& object, const void* key,
                              Block<void()> callback) {
  if (!object) return;
  setAssociatedObject(*object, key, makeRef<ZEBDeallocHook>(std::move(callback)));
}

void ZEBDeallocHook::unattachFrom(const Ref<NSObject>& object, const void* key) {
  if (!object) return;
  // Only the thread that takes the hook out touches its callback: others that unattach at the same time find
  // none, and a hook that is attached meanwhile stays.
  const Ref<NSObject> hook = takeAssociatedObject(*object, key, [](const NSObject& associated) {
    return dynamic_cast<const ZEBDeallocHook*>(&associated) != nullptr;
  });
  if (hook) static_cast<ZEBDeallocHook&>(*hook).removeCallback();
}

}  // namespace zeb
