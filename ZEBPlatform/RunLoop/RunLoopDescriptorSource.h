#pragma once

#include <ZEBPlatform/Memory/detail/ItemBlock.h>
#include <ZEBPlatform/RunLoop/RunLoopItem.h>

#include <cstdint>
#include <utility>

namespace zeb {

/// What can be waited for on a file descriptor, as bits.
enum DescriptorEvent : std::uint32_t {
  DescriptorReadable = 1 << 0,
  DescriptorWritable = 1 << 1,
};

/// Calls a block whenever a file descriptor is ready, again and again while it is. Hang-ups and errors
/// make a descriptor ready for whatever it is watched for, so that the read or write reports them. Use
/// non-blocking descriptors: somebody else may have read already when the block is called.
///
/// The descriptor stays the caller's: invalidate the source first, then close it. Several sources may watch
/// one descriptor.
class RunLoopDescriptorSource final : public RunLoopItem {
 public:
  using Handler =
      Block<void(const Ref<RunLoopDescriptorSource>& source, std::uint32_t readyEvents)>;

  /// Nil for what nobody can wait for: a regular file, a folder, a disk, a closed descriptor. `events` are the
  /// bits to watch for. This takes no descriptor itself; whether a loop can watch shows when the source is added
  /// (see `NSRunLoop::addDescriptorSource`).
  static Ref<RunLoopDescriptorSource> source(int descriptor, std::uint32_t events, Handler handler);

  int descriptor() const noexcept { return descriptor_; }
  std::uint32_t events() const noexcept { return events_.load(std::memory_order_relaxed); }
  /// Changes what is watched for; 0 pauses the source. Any thread.
  void setEvents(std::uint32_t events);

 private:
  friend class detail::RunLoopCore;
  friend class detail::RunLoopModes;

  RunLoopDescriptorSource(int descriptor, std::uint32_t events, Handler handler)
      : descriptor_(descriptor), events_(events), handler_(std::move(handler)) {}

  // While its block is called by the loop, and runs the loop, the descriptor may be ready all the time.
  bool isResting() const noexcept { return isResting_.load(std::memory_order_relaxed); }
  void setResting(bool isResting) noexcept {
    isResting_.store(isResting, std::memory_order_relaxed);
  }

  /// Calls the block if it waits for any of the events; answers whether.
  bool call(std::uint32_t readyEvents) noexcept;
  void leave(detail::RunLoopCore& core) noexcept override;
  void releaseBlock() noexcept override { handler_.release(); }

  const int descriptor_;
  std::atomic<std::uint32_t> events_;
  bool isCalling_ = false;  ///< the loop's thread only
  std::atomic<bool> isResting_{false};
  detail::ItemBlock<void(const Ref<RunLoopDescriptorSource>&, std::uint32_t)> handler_;
};

}  // namespace zeb
