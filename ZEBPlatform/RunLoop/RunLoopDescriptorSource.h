#pragma once

#include <ZEBPlatform/RunLoop/RunLoopItem.h>

#include <cstdint>
#include <utility>

namespace zeb {

/// What can be waited for on a file descriptor, as bits.
enum DescriptorEvent : std::uint32_t {
  DescriptorReadable = 1 << 0,
  DescriptorWritable = 1 << 1,
};

class RunLoopDescriptorSource;

namespace detail {
using RunLoopDescriptorSourceBase =
    CallingRunLoopItem<const Ref<RunLoopDescriptorSource>& /*source*/, std::uint32_t /*events*/>;
}

/// Calls a block whenever a file descriptor is ready, again and again while it is. Hang-ups and
/// errors make a descriptor ready for whatever it is watched for, so that the read or write reports
/// them. Use non-blocking descriptors: another reader may have emptied the descriptor before the
/// block is called.
///
/// The descriptor stays the caller's: invalidate the source first, then close it. Several sources
/// may watch one descriptor.
class RunLoopDescriptorSource final : public detail::RunLoopDescriptorSourceBase {
 public:
  /// Nil for descriptors that cannot be waited for: a regular file, a folder, a disk, a closed
  /// descriptor. `events` are the bits to watch for. The source takes no descriptor of its own;
  /// whether a loop can watch shows when the source is added (see
  /// `NSRunLoop::addDescriptorSource`).
  [[nodiscard]] static Ref<RunLoopDescriptorSource> source(int descriptor, std::uint32_t events,
                                                           Handler handler);

  int descriptor() const noexcept { return static_cast<int>(order()); }
  std::uint32_t events() const noexcept { return events_.load(std::memory_order_relaxed); }
  /// Changes what is watched for; 0 pauses the source. Any thread.
  void setEvents(std::uint32_t events);

 private:
  friend class detail::RunLoopCore;
  friend class detail::RunLoopModes;

  /// Sorted by descriptor, so that a loop finds the sources of a ready descriptor quickly.
  RunLoopDescriptorSource(int descriptor, std::uint32_t events, Handler handler)
      : CallingRunLoopItem(Kind::descriptorSource, descriptor, std::move(handler)),
        events_(events) {}

  // The descriptor may stay ready while the block runs the loop, so it is not watched meanwhile.
  bool isResting() const noexcept { return isResting_.load(std::memory_order_relaxed); }
  void setResting(bool isResting) noexcept {
    isResting_.store(isResting, std::memory_order_relaxed);
  }

  /// Calls the block if it waits for any of the events. Whether it was called.
  bool handle(std::uint32_t readyEvents) noexcept;

  std::atomic<std::uint32_t> events_;
  std::atomic<bool> isResting_{false};
};

}  // namespace zeb
