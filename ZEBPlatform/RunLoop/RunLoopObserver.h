#pragma once

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

class RunLoopObserver;

namespace detail {
using RunLoopObserverBase =
    CallingRunLoopItem<const Ref<RunLoopObserver>& /*observer*/, RunLoopActivity>;
}

/// Its block is called when a run loop reaches chosen moments. `RunLoopBeforeWaiting` is the moment
/// for work that should wait until the current burst of events has been handled. Not a way to get
/// work done on a thread: an observer does not keep a loop running, and a busy loop may never wait.
class RunLoopObserver final : public detail::RunLoopObserverBase {
 public:
  /// `activities` are the bits of the chosen moments. An observer that does not repeat is
  /// invalidated by its first call. Observers of lower `order` are called first, those of equal
  /// order in the order in which they were added.
  RunLoopObserver(std::uint32_t activities, bool repeats, std::int64_t order, Handler handler)
      : CallingRunLoopItem(Kind::observer, order, std::move(handler)),
        activities_(activities),
        repeats_(repeats) {}

  std::uint32_t activities() const noexcept { return activities_; }
  bool repeats() const noexcept { return repeats_; }
  std::int64_t order() const noexcept { return RunLoopItem::order(); }

 private:
  friend class detail::RunLoopCore;

  void notify(RunLoopActivity activity) noexcept;

  const std::uint32_t activities_;
  const bool repeats_;
};

}  // namespace zeb
