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
  const Ref<NSObject> associated = associatedObject(*object, key);
  auto* hook = dynamic_cast<ZEBDeallocHook*>(associated.get());
  if (!hook) return;
  hook->removeCallback();
  setAssociatedObject(*object, key, nullptr);
}

}  // namespace zeb
