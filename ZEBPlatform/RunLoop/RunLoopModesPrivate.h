#pragma once

#include <ZEBPlatform/Concurrency/detail/DeadlineHeap.h>
#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Linux/detail/PollSet.h>
#include <ZEBPlatform/RunLoop/NSRunLoop.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace zeb::detail {

struct RunLoopMode;

/// A timer's place in one mode; in the mode's heap unless the timer is about to fire.
struct TimerNode : DeadlineNode {
  TimerNode(Ref<NSTimer> itsTimer, RunLoopMode& itsMode)
      : timer(std::move(itsTimer)), mode(itsMode) {}
  const Ref<NSTimer> timer;
  RunLoopMode& mode;
};

/// What a loop has to do in one mode, or in the common modes.
struct RunLoopMode {
  explicit RunLoopMode(const NSString& itsName)
      : name(itsName.copy()),
        isDefault(name == NSString(NSDefaultRunLoopMode)),
        isCommon(isDefault) {}

  const NSString name;
  const bool isDefault;
  bool isCommon;  ///< changed on the loop's thread with the lock of its `RunLoopModes` held

  // Guarded by the lock of its `RunLoopModes`:
  std::size_t runCount = 0;    ///< runs in progress
  std::size_t timerCount = 0;  ///< timers in this mode, in the heap or about to fire
  DeadlineHeap timers;
  /// The items of each kind, sorted by their order. Timers are in the heap instead.
  std::array<std::vector<Ref<RunLoopItem>>, RunLoopItem::kindCount> items;
};

/// The modes of a loop and the items in them. A mode exists as long as it has items, the loop runs
/// in it, or it is common, so that a name may be made up for one use.
///
/// It locks itself and calls no user code: items that it removes are handed out, because releasing
/// them may run a destructor of the user. Any thread, unless a function says otherwise.
class RunLoopModes {
 public:
  using Kind = RunLoopItem::Kind;
  using ReleasedItems = std::vector<Ref<RunLoopItem>>;

  RunLoopModes();

  RunLoopMode& defaultMode() noexcept { return default_; }

  /// Keeps a mode, which is made if it does not exist, for as long as the loop runs in it.
  class Run {
   public:
    Run(RunLoopModes& modes, const NSString& name);
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run();
    RunLoopMode& mode() const noexcept { return mode_; }

   private:
    RunLoopModes& modes_;
    RunLoopMode& mode_;
  };

  /// `pollSet` may be null: nothing is watched yet.
  void makeCommon(const NSString& modeName, PollSet* pollSet) ZEB_EXCLUDES(lock_);

  /// Refuses all later additions and returns all items.
  ReleasedItems close() ZEB_EXCLUDES(lock_);
  bool isClosed() ZEB_EXCLUDES(lock_);

  /// Adds an item unless the mode has it already. False after `close`.
  bool insert(RunLoopItem& item, const NSString& modeName) ZEB_EXCLUDES(lock_);
  /// Removes an item that is not a timer from one mode.
  ReleasedItems remove(RunLoopItem& item, const NSString& modeName) ZEB_EXCLUDES(lock_);
  /// Removes an item from all modes.
  ReleasedItems remove(RunLoopItem& item) ZEB_EXCLUDES(lock_);

  /// Moves the timer to its place in each heap after a change. Whether the loop may have to wake up
  /// earlier than before.
  bool schedule(NSTimer& timer) ZEB_REQUIRES(timer.lock_) ZEB_EXCLUDES(lock_);
  bool canWatch(int descriptor, const PollSet& pollSet) ZEB_EXCLUDES(lock_);
  /// Brings the set up to date for one descriptor.
  void watch(int descriptor, PollSet& pollSet) ZEB_EXCLUDES(lock_);

  /// Whether any mode has items of this kind, other than timers.
  bool hasAny(Kind kind) const noexcept {
    return counts_[indexOf(kind)].load(std::memory_order_relaxed) > 0;
  }

  // For the loop's thread. Each is about a mode, together with the common modes if it is one of
  // them.

  /// Takes one timer that is due at `moment`; nil if there is none left. Timers that are scheduled
  /// during these calls are not due before the next moment that is asked for.
  Ref<NSTimer> takeDueTimer(RunLoopMode& mode, std::uint64_t moment) ZEB_EXCLUDES(lock_);
  std::vector<Ref<RunLoopSource>> pendingSources(RunLoopMode& mode) ZEB_EXCLUDES(lock_);
  std::vector<Ref<RunLoopObserver>> observersOf(RunLoopMode& mode, RunLoopActivity activity)
      ZEB_EXCLUDES(lock_);
  std::vector<Ref<RunLoopDescriptorSource>> sourcesOf(RunLoopMode& mode, int descriptor)
      ZEB_EXCLUDES(lock_);

  struct Outlook {
    std::uint64_t nextWakeUp = UINT64_MAX;  ///< of the timers
    bool hasTimers = false;
    bool hasInputs = false;
    bool hasPendingSource = false;
  };
  Outlook outlook(RunLoopMode& mode) ZEB_EXCLUDES(lock_);

  /// Makes the set watch the descriptors of this mode instead of those of the mode before.
  void watchMode(RunLoopMode& mode, PollSet& pollSet) ZEB_EXCLUDES(lock_);

 private:
  using ItemList = std::vector<Ref<RunLoopItem>>;

  static constexpr std::size_t indexOf(Kind kind) noexcept {
    return static_cast<std::size_t>(kind);
  }

  static ItemList& listOf(RunLoopMode& mode, Kind kind) noexcept {
    return mode.items[indexOf(kind)];
  }
  static std::span<const Ref<RunLoopItem>> sourcesOfDescriptor(RunLoopMode& mode,
                                                               int descriptor) noexcept;
  template <class Visit>
  void visitActive(RunLoopMode& mode, const Visit& visit) ZEB_REQUIRES(lock_) {
    visit(mode);
    if (mode.isCommon) visit(common_);
  }

  RunLoopMode* find(const NSString& name) noexcept ZEB_REQUIRES(lock_);
  RunLoopMode& findOrMake(const NSString& name) ZEB_REQUIRES(lock_);
  RunLoopMode& beginRun(const NSString& name) ZEB_EXCLUDES(lock_);
  void forgetIfUnused(RunLoopMode& mode) noexcept ZEB_REQUIRES(lock_);
  void insertTimer(NSTimer& timer, RunLoopMode& mode) ZEB_REQUIRES(lock_);
  void removeTimer(NSTimer& timer, ReleasedItems& released) ZEB_REQUIRES(lock_);
  void removeFrom(RunLoopMode& mode, RunLoopItem& item, ReleasedItems& released)
      ZEB_REQUIRES(lock_);
  void watchLocked(int descriptor, PollSet& pollSet) ZEB_REQUIRES(lock_);

  Lock lock_;
  std::vector<std::unique_ptr<RunLoopMode>> modes_ ZEB_GUARDED_BY(lock_);
  RunLoopMode& default_;
  RunLoopMode& common_;
  /// Null when the mode no longer exists; it was empty then.
  RunLoopMode* watched_ ZEB_GUARDED_BY(lock_);
  /// The latest moment for which due timers were asked.
  std::uint64_t latestMoment_ ZEB_GUARDED_BY(lock_) = 0;
  bool isClosed_ ZEB_GUARDED_BY(lock_) = false;

  /// The number of items of each kind in all modes together, so that a loop without any takes no
  /// lock to find that out.
  std::array<std::atomic<std::size_t>, RunLoopItem::kindCount> counts_{};
};

}  // namespace zeb::detail
