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

#include <memory>
#include <type_traits>
#include <utility>

namespace zeb {

namespace detail {
class RunLoopCore;
}

/// The event loop of one thread: timers, file descriptors, blocks from other threads, and on the main thread
/// the main queue. Each thread has one, made when it is first asked for; it does something only while its
/// thread runs it. It is for threads that wait for events of several kinds. To run work somewhere else than
/// here, a dispatch queue is simpler.
///
/// A loop runs in one mode at a time and does what was added to that mode (or to the common modes, if the
/// mode is one of them); the rest waits. Modes are made by using their names and forgotten when nothing
/// is left in them. Loops may be run from inside their own callbacks, in the same or another mode, to any depth.
///
/// One pass of a loop: due timers fire, each at most once; then blocks, signalled sources and the main queue
/// run; then ready descriptors are handled. If nothing is left to do after that, the thread sleeps.
///
/// Blocks may be posted and items (timers, observers, sources, ports) added and removed from any thread;
/// `run…` and what is said to need the loop's own thread stop the process elsewhere. Callbacks are called
/// without any lock held, and one that throws ends the process. Waking a loop costs a system call only when
/// its thread sleeps.
///
/// The loop ends with its thread: blocks that have not run, and those that come later, are released without
/// a call, and all items are invalidated. The main thread's loop never ends.
class NSRunLoop final : public NSObject {
 public:
  static Ref<NSRunLoop> currentRunLoop();
  static const Ref<NSRunLoop>& mainRunLoop();
  ~NSRunLoop() override;

  /// Runs in the default mode until `stop()` or until nothing is left that could make it do anything. The
  /// main thread's loop always has the main queue.
  void run();
  /// The same, and no longer than until the date. Nil or a past date: does what is ready, without waiting.
  void runUntilDate(const NSDate& limit);
  /// Runs until the date has passed, `stop()`, or something other than a timer has been handled: a block, the
  /// main queue, a source or a descriptor. False at once if the mode has no timer, source or port and no
  /// block waits for it. Nil or a past date: one pass, without waiting.
  bool runMode(const NSString& mode, const NSDate& limit);
  /// Ends the innermost run that is in progress, as soon as its callback returns; nothing if there is none. Any
  /// thread. To end a run that may not have begun yet, post a block that stops it.
  void stop();

  /// Fires the mode's due timers and answers when the next one may fire: the distant future if there is no
  /// timer but an input, nil if there is neither. On the loop's thread.
  NSDate limitDateForMode(const NSString& mode);

  /// The mode of the innermost run, or nil. On the loop's thread.
  NSString currentMode() const;

  /// Has the block (anything that can be called without arguments) called on the loop's thread, once the loop
  /// runs in the default mode, after all blocks that were posted earlier. It is moved in, and destroyed right
  /// after its call. Any thread.
  template <class Callable>
  void performBlock(Callable&& block) {
    if (!isNil(block)) post(*detail::newWorkItem(std::forward<Callable>(block)));
  }
  /// The same, once the loop runs in one of the modes, which may be `NSRunLoopCommonModes`. No modes: never.
  /// `target` is any address to cancel the block by; it is not dereferenced.
  template <class Callable>
  void performBlock(const NSArray& modes, Callable&& block, const void* target = nullptr) {
    if (isNil(block)) return;
    post(*detail::newWorkItem(std::forward<Callable>(block)), modes, target);
  }
  /// Drops the blocks with this target that have not run. On the loop's thread.
  void cancelPerformBlocksWithTarget(const void* target);

  /// Adding twice to one mode does nothing, as does adding nil or what is invalid; removing what is not
  /// there, likewise. What is in no mode any longer stays valid. Adding to a loop that has ended invalidates.
  void addTimer(const Ref<NSTimer>& timer, const NSString& mode);
  void addObserver(const Ref<RunLoopObserver>& observer, const NSString& mode);
  void removeObserver(const Ref<RunLoopObserver>& observer, const NSString& mode);
  void addSource(const Ref<RunLoopSource>& source, const NSString& mode);
  void removeSource(const Ref<RunLoopSource>& source, const NSString& mode);
  /// A loop that watches needs three descriptors of its own. If the process has too few left for them, or the
  /// system cannot wait for the source's descriptor, the source is invalidated.
  void addDescriptorSource(const Ref<RunLoopDescriptorSource>& source, const NSString& mode);
  void removeDescriptorSource(const Ref<RunLoopDescriptorSource>& source, const NSString& mode);
  void addPort(const Ref<NSPort>& port, const NSString& mode);
  void removePort(const Ref<NSPort>& port, const NSString& mode);

  /// Makes the mode one of the common modes, for good. On the loop's thread.
  void addCommonMode(const NSString& mode);

  /// For an application whose own event loop does the waiting: a descriptor that is readable whenever
  /// `runPending()` has something to do, timers included. It belongs to the loop and must only be waited
  /// for. -1 when the process has too few descriptors left; then it may be asked for again. On the loop's
  /// thread.
  int pollableDescriptor();
  /// Does one pass in the default mode, without waiting, and leaves the descriptor readable if there is more to
  /// do. If there is not, it ends by telling the observers that the thread is about to wait; runs that begin
  /// and end are not reported. May be called when nothing is to do, and from inside a callback, as happens
  /// when that runs the application's event loop. On the loop's thread.
  void runPending();

  /// What items and threads work with.
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
