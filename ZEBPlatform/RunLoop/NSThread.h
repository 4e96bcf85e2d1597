#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Linux/detail/Thread.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/RunLoop/NSRunLoop.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <optional>
#include <utility>

namespace zeb {

/// Posted on the default notification centre for threads that were started here: on the thread that
/// is about to exit, with its `NSThread` as object.
extern const char* const NSThreadWillExitNotification;

/// A new thread that runs one block and ends; usually one with a run loop. To run work elsewhere,
/// queues are cheaper.
///
/// A thread that was started in another way gets an `NSThread` when it first asks for it. Threads
/// are detached: nothing waits for them, and the process may exit while they run. All functions may
/// be called from any thread unless they say otherwise.
class NSThread final : public NSObject {
 public:
  /// A thread that will run the block once it is started. It keeps itself alive while it runs, and
  /// the block until the block has run.
  explicit NSThread(Block<void()> block);
  ~NSThread() override;

  /// Makes a thread and starts it.
  static void detachNewThreadWithBlock(Block<void()> block);

  static Ref<NSThread> currentThread();
  static const Ref<NSThread>& mainThread();

  /// The calling thread's stack, one line for each function, beginning with the caller; at most
  /// 128. A line has a number, the file name of the program or library, the return address, and the
  /// function with an offset. Its form is described in Linux/CallStack.h.
  static NSArray callStackSymbols();

  /// Returns no earlier than after this time of the monotonic clock.
  static void sleepForTimeInterval(NSTimeInterval seconds);
  static void sleepForTimeInterval(std::chrono::duration<double> interval) {
    sleepForTimeInterval(interval.count());
  }
  /// The date is converted to an interval at the call. With nil or a past date it returns at once.
  static void sleepUntilDate(const NSDate& date);

  /// Throws NSException (NSInvalidArgumentException) when it was started before, and
  /// (NSGenericException) when the system has no more threads. A thread that was cancelled before
  /// does not run its block. The thread starts with the signal mask of the calling thread; a block
  /// of a queue has all signals blocked but those of faults and SIGPROF.
  void start();
  /// Sets a flag that the thread's block may read.
  void cancel() noexcept;
  bool isCancelled() const noexcept;
  /// Whether it has been started and has not finished.
  bool isExecuting() const noexcept;
  bool isFinished() const noexcept;
  bool isMainThread() const noexcept;

  /// The system's handle of the thread; nothing unless the thread runs. On other threads it may
  /// become invalid at any moment.
  std::optional<ThreadHandle> handle() const;
  /// Sends a signal to the thread. Unlike the system's function it may be called at any time, also
  /// while the thread ends: it answers false unless the thread runs. The thread's run loop drops
  /// its blocks only after the signal's handler has returned.
  bool sendSignal(int signal) const;

  NSString name() const;
  /// The system gets the first 15 bytes of it, for debuggers and `top`. The system's name of the
  /// main thread is that of the process and does not change.
  void setName(const NSString& name);

  /// In bytes; 0, the default, for the system's usual size. Has an effect before `start` only.
  std::size_t stackSize() const;
  void setStackSize(std::size_t bytes);

  /// The thread's run loop, also before the thread has started and after it has finished.
  const Ref<NSRunLoop>& runLoop() const noexcept;

  /// For any values of the thread's code; lives as long as the thread. For use on that thread only.
  NSMutableDictionary threadDictionary();

 private:
  enum class Phase { made, started, finished };

  struct MainThread {};
  struct ForeignThread {};
  explicit NSThread(MainThread);
  explicit NSThread(ForeignThread);
  class Current;

  void run() noexcept;
  void finish() noexcept;

  const bool isMain_;
  std::atomic<bool> isCancelled_{false};
  std::atomic<Phase> phase_{Phase::made};
  NSMutableDictionary dictionary_;  ///< made by the thread itself
  const Ref<NSRunLoop> runLoop_;

  mutable detail::Lock lock_;
  Block<void()> block_ ZEB_GUARDED_BY(lock_);
  NSString name_ ZEB_GUARDED_BY(lock_);
  std::size_t stackSize_ ZEB_GUARDED_BY(lock_) = 0;
  std::optional<ThreadHandle> handle_ ZEB_GUARDED_BY(lock_);  ///< while the thread runs
};

namespace detail {

/// The array that names the common modes.
const NSArray& commonModes();
void performAndWait(const Ref<NSThread>& thread, FunctionView<void()> block, const NSArray& modes);

}  // namespace detail

/// Calls the block (anything that can be called without arguments) on the thread, as soon as its
/// run loop runs in one of the modes. With `waitUntilDone` this returns after the call, which is
/// made at once if the calling thread is the target. If the thread ends or has ended, the block is
/// dropped without a call, and a waiting caller returns. With a nil thread or block it does
/// nothing.
template <class Callable>
void performOnThread(const Ref<NSThread>& thread, Callable&& block, bool waitUntilDone,
                     const NSArray& modes = detail::commonModes()) {
  if (!thread) return;
  if (waitUntilDone) {
    detail::performAndWait(thread, block, modes);
  } else {
    thread->runLoop()->performBlock(modes, std::forward<Callable>(block));
  }
}

}  // namespace zeb
