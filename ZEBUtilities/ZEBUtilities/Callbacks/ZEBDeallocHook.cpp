#include <ZEBPlatform/Runtime/BlockConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Callbacks/ZEBDeallocHook.h>

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
  // Only the thread that takes the hook out touches its callback: other threads that unattach at
  // the same time find no hook, and a hook that is attached meanwhile stays.
  const Ref<NSObject> hook = takeAssociatedObject(*object, key, [](const NSObject& associated) {
    return dynamic_cast<const ZEBDeallocHook*>(&associated) != nullptr;
  });
  if (hook) static_cast<ZEBDeallocHook&>(*hook).removeCallback();
}

Class* ZEBDeallocHook::runtimeClass() {
  using Self = ZEBDeallocHook;
  static Class* const cls = registerClass(
      "ZEBDeallocHook",
      {
          classMethod("initWithCallback:",
                      [](const Block<void()>& callback) { return makeRef<Self>(callback); }),
          classMethod("attachTo:forKey:callback:", &Self::attachTo),
          classMethod("unattachFrom:forKey:", &Self::unattachFrom),
          property("callback", &Self::callback, &Self::setCallback),
          method("removeCallback", &Self::removeCallback),
      });
  return cls;
}

}  // namespace zeb
