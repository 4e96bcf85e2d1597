#pragma once

#include <ZEBPlatform/Concurrency/detail/CallGuard.h>
#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace zeb {

class NSRunLoop;

namespace detail {
class RunLoopCore;
class RunLoopModes;
struct RunLoopMode;
}  // namespace detail

/// What a run loop works for in chosen modes: a timer, an observer, a source or a port.
///
/// An item belongs to the loop that it is added to first, in any number of its modes; adding it to
/// another loop does nothing. The loop keeps it alive until it is removed from its last mode, is
/// invalidated, or the loop's thread ends, which invalidates it. Its block is called on the loop's
/// thread, without any lock held, and never from within itself: a loop that the block runs leaves
/// the item alone. A block that throws ends the process.
class RunLoopItem : public NSObject {
 public:
  ~RunLoopItem() override;

  bool isValid() const noexcept { return isValid_.load(std::memory_order_acquire); }

  /// Takes the item out of its loop for good and releases its block; a call in progress keeps the
  /// block until it ends. No call begins afterwards. Invalidating again does nothing. Any thread,
  /// also from the item's own block.
  void invalidate();

 protected:
  enum class Kind : std::uint8_t { observer, source, descriptorSource, port, timer };
  static constexpr std::size_t kindCount = 5;

  /// A loop keeps items of one kind sorted by `order`, and items of equal order as they were added.
  explicit RunLoopItem(Kind kind, std::int64_t order = 0) noexcept;

  std::int64_t order() const noexcept { return order_; }
  /// The loop that the item was added to, or nil.
  Ref<NSRunLoop> loop() const ZEB_EXCLUDES(lock_);
  virtual void releaseBlock() noexcept {}

  /// The locks of the loop may be taken while it is held.
  mutable detail::Lock lock_;
  Ref<NSRunLoop> loop_ ZEB_GUARDED_BY(lock_);

 private:
  friend class NSRunLoop;
  friend class detail::RunLoopCore;
  friend class detail::RunLoopModes;
  friend struct detail::RunLoopMode;

  const std::int64_t order_;
  const Kind kind_;
  std::atomic<bool> isValid_{true};
};

namespace detail {

/// An item that calls a block. One thread may release the block while another one calls it.
template <class... Arguments>
class CallingRunLoopItem : public RunLoopItem {
 public:
  using Handler = Block<void(Arguments...)>;

 protected:
  CallingRunLoopItem(Kind kind, std::int64_t order, Handler handler) noexcept
      : RunLoopItem(kind, order), handler_(std::move(handler)) {}

  /// The block; nil once it is released.
  Handler handler() const ZEB_EXCLUDES(lock_) {
    const LockGuard guard(lock_);
    return handler_;
  }

  // For the loop's thread:

  bool isCalling() const noexcept { return isCalling_; }
  /// Calls the block unless it is being called or was released. Whether it was called.
  bool call(Arguments... arguments) noexcept {
    const CallGuard guard(isCalling_);
    if (!guard) return false;
    const Handler handler = this->handler();
    if (!handler) return false;
    handler(std::forward<Arguments>(arguments)...);
    return true;
  }

 private:
  void releaseBlock() noexcept final {
    Handler released;  // destroyed after the lock is free, because that runs the user's code
    const LockGuard guard(lock_);
    std::swap(released, handler_);
  }

  Handler handler_ ZEB_GUARDED_BY(lock_);
  bool isCalling_ = false;
};

}  // namespace detail

}  // namespace zeb
