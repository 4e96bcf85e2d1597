#pragma once

#include <ZEBPlatform/Concurrency/detail/DeadlineHeap.h>
#include <ZEBPlatform/Linux/detail/PollSet.h>
#include <ZEBPlatform/RunLoop/NSRunLoop.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <tuple>
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
  bool isCommon;  ///< changed on the loop's thread and under the lock

  // Under the lock:
  std::size_t runCount = 0;    ///< runs that are in progress
  std::size_t timerCount = 0;  ///< that belong to it, in the heap or about to fire
  DeadlineHeap timers;
  /// Observers in the order of their calls, descriptor sources by descriptor.
  std::tuple<std::vector<Ref<RunLoopObserver>>, std::vector<Ref<RunLoopSource>>,
             std::vector<Ref<RunLoopDescriptorSource>>, std::vector<Ref<NSPort>>>
      items;
};

/// The modes of a loop and what is in them. A mode lasts as long as something is in it, the loop runs in it, or
/// it is common; names may be made up for one use. Locks itself and calls nobody; it hands out the references that
/// it gives up, for a release may run anybody's code. Any thread, where nothing else is said.
class RunLoopModes {
 public:
  using ReleasedItems = std::vector<Ref<RunLoopItem>>;

  RunLoopModes();

  RunLoopMode& defaultMode() noexcept { return default_; }

  /// Keeps a mode, which is made if it is not there, for as long as the loop runs in it.
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
  void makeCommon(const NSString& modeName, PollSet* pollSet);

  /// Nothing can be added any more; answers all there is.
  ReleasedItems close();
  bool isClosed();

  /// Adds an item, once. False after `close`.
  template <class Item>
  bool insert(Item& item, const NSString& modeName);
  bool insert(NSTimer& timer, const NSString& modeName);
  template <class Item>
  ReleasedItems remove(Item& item, const NSString& modeName);
  /// Removes an item from all modes.
  template <class Item>
  ReleasedItems remove(Item& item);
  ReleasedItems remove(NSTimer& timer);

  /// Puts the timer in its places after a change, its own lock being held. Whether the loop may have to wake up
  /// earlier than before.
  bool schedule(NSTimer& timer);
  bool canWatch(int descriptor, const PollSet& pollSet);
  /// Brings the set up to date for one descriptor.
  void watch(int descriptor, PollSet& pollSet);

  /// Whether any mode has such items.
  template <class Item>
  bool hasAny() const noexcept {
    return std::get<Count<Item>>(counts_).value.load(std::memory_order_relaxed) > 0;
  }

  // What follows is for the loop's thread, and about a mode together with the common modes, if it is one.

  /// The timers that are due at `moment`, one after the other. What is scheduled meanwhile is not due before
  /// the next moment that is asked for.
  Ref<NSTimer> takeDueTimer(RunLoopMode& mode, std::uint64_t moment);
  std::vector<Ref<RunLoopSource>> signalledSources(RunLoopMode& mode);
  std::vector<Ref<RunLoopObserver>> observersOf(RunLoopMode& mode, RunLoopActivity activity);
  std::vector<Ref<RunLoopDescriptorSource>> sourcesOf(RunLoopMode& mode, int descriptor);

  struct Outlook {
    std::uint64_t nextWakeUp = UINT64_MAX;  ///< of its timers
    bool hasTimers = false;
    bool hasInputs = false;
    bool hasSignalledSource = false;
  };
  Outlook outlook(RunLoopMode& mode);

  /// From now on the set watches the descriptors of this mode.
  void watchMode(RunLoopMode& mode, PollSet& pollSet);

 private:
  template <class Item>
  struct Count {
    std::atomic<std::size_t> value{0};
  };

  RunLoopMode* find(const NSString& name) noexcept;
  RunLoopMode& findOrMake(const NSString& name);
  RunLoopMode& beginRun(const NSString& name);
  void forgetIfUnused(RunLoopMode& mode) noexcept;
  template <class Visit>
  void visitActive(RunLoopMode& mode, const Visit& visit);
  template <class Item>
  void removeFrom(RunLoopMode& mode, Item& item, ReleasedItems& released);
  void watchNow(int descriptor, PollSet& pollSet);

  std::mutex mutex_;
  // Under the lock:
  std::vector<std::unique_ptr<RunLoopMode>> modes_;
  RunLoopMode& default_;
  RunLoopMode& common_;
  RunLoopMode* watched_;          ///< null when it has been forgotten, with nothing in it
  std::uint64_t lastMoment_ = 0;  ///< for which due timers were asked
  bool isClosed_ = false;

  /// How many of each kind all modes have together, so that a loop without them need not look.
  std::tuple<Count<RunLoopObserver>, Count<RunLoopSource>, Count<RunLoopDescriptorSource>,
             Count<NSPort>>
      counts_;
};

}  // namespace zeb::detail
