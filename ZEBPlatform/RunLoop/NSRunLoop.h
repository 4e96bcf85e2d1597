#pragma once

#include <ZEBPlatform/Concurrency/detail/WorkItem.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/RunLoop/NSPort.h>
#include <ZEBPlatform/RunLoop/NSTimer.h>
#include <ZEBPlatform/RunLoop/RunLoopDescriptorSource.h>
#include <ZEBPlatform/RunLoop/RunLoopMode.h>
#include <ZEBPlatform/RunLoop/RunLoopObserver.h>
#include <ZEBPlatform/RunLoop/RunLoopSource.h>

#include <chrono>
#include <memory>
#include <type_traits>
#include <utility>

namespace zeb {

namespace detail {
class RunLoopCore;
}

/// The event loop of one thread: timers, file descriptors, blocks from other threads, and on the
/// main thread the main queue. Each thread has one, made on first use; it works only while its
/// thread runs it. It is for threads that wait for events of several kinds. To run work elsewhere,
/// a dispatch queue is simpler.
///
/// A loop runs in one mode at a time and handles the items that were added to that mode (or to the
/// common modes, if the mode is one of them); everything else waits. A mode exists from the first
/// use of its name until nothing is left in it. A loop may be run from inside its own callbacks, in
/// the same or another mode, to any depth.
///
/// One pass of a loop: due timers fire, each at most once; then blocks, signalled sources and the
/// main queue run; then ready descriptors are handled. If nothing is left to do after that, the
/// thread sleeps.
///
/// Blocks may be posted and items (timers, observers, sources, ports) added and removed on any
/// thread. The `run…` functions, and those that say so, stop the process on any thread but the
/// loop's own. Callbacks are called without any lock held, and one that throws ends the process.
/// Waking a loop costs a system call only when its thread sleeps.
///
/// The loop ends with its thread: blocks that have not run, and blocks that are posted later, are
/// released without a call, and all items are invalidated. The main thread's loop never ends.
class NSRunLoop final : public NSObject {
 public:
  static Ref<NSRunLoop> currentRunLoop();
  static const Ref<NSRunLoop>& mainRunLoop();
  ~NSRunLoop() override;

  /// Runs in the default mode until `stop()` or until no item and no block is left that it could
  /// wait for. The main thread's loop always has the main queue.
  void run();
  /// The same, at most until the date, or for this time. With nil or a past date it handles what is
  /// ready, without waiting.
  void runUntilDate(const NSDate& limit);
  void runFor(std::chrono::duration<double> limit);
  /// Runs until the date or the time has passed, `stop()` was called, or it has handled anything
  /// but a timer: a block, the main queue, a source or a descriptor. Returns false at once if the
  /// mode has no timer, source or port and no block for it is waiting. With nil or a past date it
  /// makes one pass, without waiting.
  bool runMode(const NSString& mode, const NSDate& limit);
  bool runMode(const NSString& mode, std::chrono::duration<double> limit);
  /// Ends the innermost run in progress, as soon as its callback returns; without one it does
  /// nothing. Any thread. To end a run that may not have begun yet, post a block that stops it.
  void stop();

  /// Fires the mode's due timers and returns when the next one may fire: the distant future if
  /// there is no timer but an input, nil if there is neither. On the loop's thread.
  NSDate limitDateForMode(const NSString& mode);

  /// The mode of the innermost run, or nil. On the loop's thread.
  NSString currentMode() const;

  /// Calls the block (anything that can be called without arguments) on the loop's thread, once the
  /// loop runs in the default mode, after all blocks that were posted earlier. The block is moved
  /// in, and destroyed right after its call. Any thread.
  template <class Callable>
  void performBlock(Callable&& block) {
    if (!isNil(block)) post(*detail::newWorkItem(std::forward<Callable>(block)));
  }
  /// The same, once the loop runs in one of the modes, which may be `NSRunLoopCommonModes`; without
  /// modes it never runs. `target` is any address to cancel the block by; it is not dereferenced.
  template <class Callable>
  void performBlock(const NSArray& modes, Callable&& block, const void* target = nullptr) {
    if (isNil(block)) return;
    post(*detail::newWorkItem(std::forward<Callable>(block)), modes, target);
  }
  /// Drops the blocks with this target that have not run. On the loop's thread.
  void cancelPerformBlocksWithTarget(const void* target);

  /// Adding an item twice to one mode, or adding nil or an invalid item, does nothing, as does
  /// removing an item that is not in the mode. An item stays valid when it is in no mode any
  /// longer. Adding an item to a loop that has ended invalidates the item.
  void addTimer(const Ref<NSTimer>& timer, const NSString& mode);
  void addObserver(const Ref<RunLoopObserver>& observer, const NSString& mode);
  void removeObserver(const Ref<RunLoopObserver>& observer, const NSString& mode);
  void addSource(const Ref<RunLoopSource>& source, const NSString& mode);
  void removeSource(const Ref<RunLoopSource>& source, const NSString& mode);
  /// To watch descriptors, a loop needs three of its own. If the process has too few left for them,
  /// or the system cannot wait for the source's descriptor, the source is invalidated.
  void addDescriptorSource(const Ref<RunLoopDescriptorSource>& source, const NSString& mode);
  void removeDescriptorSource(const Ref<RunLoopDescriptorSource>& source, const NSString& mode);
  void addPort(const Ref<NSPort>& port, const NSString& mode);
  void removePort(const Ref<NSPort>& port, const NSString& mode);

  /// Makes the mode one of the common modes, permanently. On the loop's thread.
  void addCommonMode(const NSString& mode);

  /// For an application whose own event loop does the waiting: a descriptor that is readable
  /// whenever `runPending()` has something to do, timers included. It belongs to the loop and must
  /// only be waited for. -1 when the process has too few descriptors left; a later call may
  /// succeed. On the loop's thread.
  int pollableDescriptor();
  /// Makes one pass in the default mode, without waiting, and leaves the descriptor readable if
  /// there is more to do. Otherwise it ends by calling the observers of `RunLoopBeforeWaiting`;
  /// begin and end of the run are not reported. May be called when there is nothing to do, and from
  /// inside a callback, which happens when a callback runs the application's event loop. On the
  /// loop's thread.
  void runPending();

  /// For the items and threads of this module.
  detail::RunLoopCore& core() const noexcept { return *core_; }

 private:
  friend class NSThread;

  static Ref<NSRunLoop> make(bool isMain);
  explicit NSRunLoop(bool isMain);

  /// Whether the item is in the mode now.
  bool add(RunLoopItem& item, const NSString& mode);
  void remove(RunLoopItem* item, const NSString& mode);

  template <class Callable>
  static bool isNil(const Callable& block) {
    if constexpr (detail::NullableCallable<std::remove_cvref_t<Callable>>) return !block;
    return false;
  }

  void post(detail::WorkItem& item);
  void post(detail::WorkItem& item, const NSArray& modes, const void* target);

  const std::unique_ptr<detail::RunLoopCore> core_;
};

}  // namespace zeb
