#include <ZEBPlatform/Linux/detail/PollSet.h>
#include <ZEBPlatform/RunLoop/RunLoopCorePrivate.h>
#include <ZEBPlatform/RunLoop/RunLoopDescriptorSource.h>

namespace zeb {

Ref<RunLoopDescriptorSource> RunLoopDescriptorSource::source(int descriptor, std::uint32_t events,
                                                             Handler handler) {
  if (!canBeWaitedFor(descriptor)) return nullptr;
  return Ref<RunLoopDescriptorSource>::adopt(
      new RunLoopDescriptorSource(descriptor, events, std::move(handler)));
}

void RunLoopDescriptorSource::setEvents(std::uint32_t events) {
  events_.store(events, std::memory_order_relaxed);
  if (const Ref<NSRunLoop> loop = this->loop()) loop->core().watch(descriptor_);
}

bool RunLoopDescriptorSource::call(std::uint32_t readyEvents) noexcept {
  const std::uint32_t events = this->events() & readyEvents;
  if (isCalling_ || !events) return false;
  const Handler handler = handler_.get();
  if (!handler) return false;
  isCalling_ = true;
  handler(Ref<RunLoopDescriptorSource>(this), events);
  isCalling_ = false;
  return true;
}

void RunLoopDescriptorSource::leave(detail::RunLoopCore& core) noexcept {
  core.modes().remove(*this);
  core.watch(descriptor_);
}

}  // namespace zeb
