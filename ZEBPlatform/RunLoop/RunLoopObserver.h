#pragma once

#include <ZEBPlatform/Memory/detail/ItemBlock.h>
#include <ZEBPlatform/RunLoop/RunLoopItem.h>

#include <cstdint>
#include <utility>

namespace zeb {

/// The moments of a run loop that an observer can ask for, as bits.
enum RunLoopActivity : std::uint32_t {
  RunLoopEntry = 1 << 0,          ///< a run begins
  RunLoopBeforeTimers = 1 << 1,   ///< due timers are about to fire
  RunLoopBeforeSources = 1 << 2,  ///< blocks and sources are about to run
  RunLoopBeforeWaiting = 1 << 5,  ///< nothing is left to do; the thread is about to sleep
  RunLoopAfterWaiting = 1 << 6,   ///< it has woken up
  RunLoopExit = 1 << 7,           ///< the run ends
  RunLoopAllActivities = 0x0FFFFFFF,
};

/// Is told what a run loop is about to do. `RunLoopBeforeWaiting` is the moment for work that should wait
/// until the current burst of events has been handled. Not a way to get work done on a thread: it does not
/// keep a loop running, and a busy loop may never wait.
class RunLoopObserver final : public RunLoopItem {
 public:
  using Handler = Block<void(const Ref<RunLoopObserver>& observer, RunLoopActivity activity)>;

  /// `activities` are the bits to be told of. One that does not repeat is invalidated by its first call.
  /// Lower `order`s are called first, equal ones in the order in which they were added.
  RunLoopObserver(std::uint32_t activities, bool repeats, std::int64_t order, Handler handler)
      : activities_(activities), repeats_(repeats), order_(order), handler_(std::move(handler)) {}

  std::uint32_t activities() const noexcept { return activities_; }
  bool repeats() const noexcept { return repeats_; }
  std::int64_t order() const noexcept { return order_; }

 private:
  friend class detail::RunLoopCore;

  void call(RunLoopActivity activity) noexcept;
  void leave(detail::RunLoopCore& core) noexcept override;
  void releaseBlock() noexcept override { handler_.release(); }

  const std::uint32_t activities_;
  const bool repeats_;
  const std::int64_t order_;
  bool isCalling_ = false;  ///< the loop's thread only
  detail::ItemBlock<void(const Ref<RunLoopObserver>&, RunLoopActivity)> handler_;
};

}  // namespace zeb
