#pragma once

#include <ZEBPlatform/Memory/NSObject.h>

#include <atomic>
#include <mutex>

namespace zeb {

class NSRunLoop;

namespace detail {
class RunLoopCore;
class RunLoopModes;
}  // namespace detail

/// What a run loop works for in chosen modes: a timer, an observer, a source or a port.
///
/// An item belongs to the loop that it is added to first, in any number of its modes; adding it to another
/// loop does nothing. The loop keeps it alive until it is removed from its last mode, is invalidated, or the
/// loop's thread ends, which invalidates it. Its block is called on the loop's thread, without any lock held,
/// and never from within itself: a loop that the block runs leaves the item alone. A block that throws ends
/// the process.
class RunLoopItem : public NSObject {
 public:
  ~RunLoopItem() override;

  bool isValid() const noexcept { return isValid_.load(std::memory_order_acquire); }

  /// Takes the item out of its loop for good and releases its block; a call that is under way keeps it until
  /// it ends. After this no call begins. Any thread, also from its own block. Again: nothing.
  void invalidate();

 protected:
  RunLoopItem() noexcept;

  /// Takes the item out of all modes of its loop.
  virtual void leave(detail::RunLoopCore& core) noexcept = 0;
  /// Lets go of the block.
  virtual void releaseBlock() noexcept {}

  /// The loop that the item was added to, or nil.
  Ref<NSRunLoop> loop() const;

  /// Guards what several threads may change. The loop's own locks may be taken while it is held.
  mutable std::mutex mutex_;
  Ref<NSRunLoop> loop_;  ///< under the lock

 private:
  friend class NSRunLoop;

  std::atomic<bool> isValid_{true};
};

}  // namespace zeb
