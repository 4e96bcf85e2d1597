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
#include <cstddef>
#include <optional>
#include <utility>

namespace zeb {

/// Posted on the default notification centre, on the thread that is about to exit and with its `NSThread` as
/// object, for threads that were started here.
extern const char* const NSThreadWillExitNotification;

/// A thread of its own that runs one block and ends; mostly one with a run loop. For work that just has to
/// happen elsewhere, queues are cheaper.
///
/// Threads that were started in another way have an `NSThread` too as soon as they ask for it. Threads are
/// detached: nothing waits for them, and the process may exit while they run. All functions may be called
/// from any thread unless they say otherwise.
class NSThread final : public NSObject {
 public:
  /// A thread that will run the block, once it is started. It keeps itself alive while it runs, and the block
  /// until it has run.
  explicit NSThread(Block<void()> block);
  ~NSThread() override;

  /// Makes a thread and starts it.
  static void detachNewThreadWithBlock(Block<void()> block);

  static Ref<NSThread> currentThread();
  static const Ref<NSThread>& mainThread();

  /// Ends at the earliest after that time of the monotonic clock.
  static void sleepForTimeInterval(NSTimeInterval seconds);
  /// The date becomes an interval when this is called. Nil or a past date: returns at once.
  static void sleepUntilDate(const NSDate& date);

  /// Throws NSException (NSInvalidArgumentException) when it was started before, and (NSGenericException) when
  /// the system has no more threads. A thread that was cancelled before does not run its block. It begins with
  /// the signals blocked that are blocked in the calling thread: all, when that is a block of a queue.
  void start();
  /// Sets a flag for the thread's block to look at.
  void cancel() noexcept;
  bool isCancelled() const noexcept;
  /// Whether it has been started and has not finished.
  bool isExecuting() const noexcept;
  bool isFinished() const noexcept;
  bool isMainThread() const noexcept;

  NSString name() const;
  /// Gives its first 15 bytes to the system as well, for debuggers and `top`. The main thread's name there is
  /// that of the process and stays.
  void setName(const NSString& name);

  /// In bytes; 0, as it is at first, for the system's usual size. Has an effect before `start` only.
  std::size_t stackSize() const;
  void setStackSize(std::size_t bytes);

  /// The thread's run loop, also before the thread has started and after it has finished.
  const Ref<NSRunLoop>& runLoop() const noexcept;

  /// For whatever the thread's code wants to keep; lives as long as the thread. To be used on that thread
  /// only.
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

/// Has the block (anything that can be called without arguments) called on the thread, as soon as its run
/// loop runs in one of the modes. With `waitUntilDone` this returns after the call, and on the thread itself
/// makes it at once. If the thread ends before or has ended, the block is dropped without a call, and who
/// waits for it goes on. A nil thread or block: nothing.
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
