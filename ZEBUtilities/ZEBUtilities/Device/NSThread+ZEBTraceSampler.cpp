#include <ZEBUtilities/Device/NSThread+ZEBTraceSampler.h>
#include <ZEBUtilities/Device/ZEBStackTraceSampler.h>

#include <utility>

namespace zeb {

constinit const void* const kTraceSampler = &kTraceSampler;

void zeb_setCallStackPeekEnabled(const Ref<NSThread>& thread, bool enabled) {
  if (!thread || thread != NSThread::currentThread()) return;
  const Ref<NSObject> sampler = associatedObject(*thread, kTraceSampler);
  if (!enabled && sampler) {
    static_cast<ZEBStackTraceSampler&>(*sampler).restoreAction();
    setAssociatedObject(*thread, kTraceSampler, nullptr);
  } else if (enabled && !sampler) {
    setAssociatedObject(*thread, kTraceSampler, makeRef<ZEBStackTraceSampler>());
  }
}

NSArray zeb_callStackSymbols(const Ref<NSThread>& thread) {
  const Ref<NSObject> sampler = thread ? associatedObject(*thread, kTraceSampler) : nullptr;
  return sampler ? static_cast<ZEBStackTraceSampler&>(*sampler).callstackSymbols() : nullptr;
}

void zeb_performBlockAsync(const Ref<NSThread>& thread, Block<void()> block) {
  performOnThread(thread, std::move(block), false);
}

}  // namespace zeb
