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
  if (const Ref<NSRunLoop> loop = this->loop()) loop->core().watch(descriptor());
}

bool RunLoopDescriptorSource::handle(std::uint32_t readyEvents) noexcept {
  const std::uint32_t events = this->events() & readyEvents;
  return events && call(Ref<RunLoopDescriptorSource>(this), events);
}

}  // namespace zeb
