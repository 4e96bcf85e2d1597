#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Linux/detail/Thread.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/RunLoop/NSThread.h>

#include <atomic>
#include <cstddef>

namespace zeb {

/// Lets other threads see what one thread is doing, for example the main thread while it hangs. The
/// usual way to it is `zeb_setCallStackPeekEnabled` (NSThread+ZEBTraceSampler.h).
///
/// The sampled thread is interrupted with the signal SIGPROF, whose handler writes the thread's
/// stack, at most 128 functions, into one record of the process. The handler allocates nothing and
/// takes no lock. The thread itself turns the record into text and delivers it when it next runs
/// its run loop in a common mode. So the answer is the stack at the moment of the signal, and it
/// comes as late as that: deliberately, a thread that does not return to its run loop keeps the
/// caller waiting without a time limit. If the thread ends instead, the answer is nil.
///
/// Limits, all deliberate:
///   - The signal's action is one per process: making a sampler installs the handler, and
///     destroying the sampler that was made last restores the default action, even if older ones
///     live. So only one sampler should be in use at a time. While the handler is not installed,
///     sampling answers nil; it sends no signal that would end the process.
///   - The record is one per process, too. A capture that has not been delivered, for example after
///     a SIGPROF from elsewhere, blocks later captures and is delivered instead of the next one.
///   - Two threads that sample each other at the same time wait for ever.
///   - A thread that is interrupted while the unwinder raises an exception has a stack of one line,
///     because its saved registers are moving.
///
/// Waits of the sampled thread that have a time limit of their own (poll, select, epoll_wait,
/// nanosleep, receiving with a time-out) end early with EINTR. Other system calls are continued
/// (SA_RESTART). Not to be used together with profilers that use SIGPROF.
class ZEBStackTraceSampler final : public NSObject {
 public:
  /// Samples the calling thread, and installs the handler ("initWithCurrentThread").
  ZEBStackTraceSampler();
  ~ZEBStackTraceSampler() override;

  /// Registered as "ZEBStackTraceSampler", with queue, initWithCurrentThread (a class method),
  /// callstackSymbols and both properties.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  /// The serial queue on which all samples are taken, one at a time; its label ends with
  /// ".tracessampler".
  static const dispatch_queue_t& queue();

  /// The stack of the target thread as `NSThread::callStackSymbols` writes it. On the target thread
  /// itself returns that at once, without a signal. Otherwise the first lines are those of the
  /// signal's handler. Nil if nothing was captured, or if the target thread has ended. Must not be
  /// called on the sampler's queue. Any other thread.
  NSArray callstackSymbols();

  /// The lines of that text for return addresses. Nil if there are none. The length is taken as a
  /// number of 32 bits.
  static NSArray _stackWithProgramCounters(void* const* programCounters, std::size_t length);

  /// The system's handle of the target thread, to which the signal is sent. A handle that is set
  /// here must be that of a running thread. No signal is sent once the target thread has ended. Any
  /// thread.
  ThreadHandle targetThreadId() const noexcept { return targetThreadId_; }
  void setTargetThreadId(ThreadHandle thread) noexcept { targetThreadId_ = thread; }

  /// The thread whose run loop delivers the stack. It is kept weakly. With nil the signal is sent,
  /// but nothing is delivered. Any thread.
  Ref<NSThread> targetThread() const ZEB_EXCLUDES(lock_);
  void setTargetThread(const Ref<NSThread>& thread) ZEB_EXCLUDES(lock_);

 private:
  friend void zeb_setCallStackPeekEnabled(const Ref<NSThread>& thread, bool enabled);

  /// Restores the signal's default action unless a later sampler has installed the handler. A
  /// detached sampler does that at once, because a caller of `callstackSymbols` may hold it.
  void restoreAction() noexcept;
  NSArray sample();
  void interrupt(const Ref<NSThread>& target);
  bool hasNoTarget() const ZEB_EXCLUDES(lock_);

  std::atomic<ThreadHandle> targetThreadId_;
  mutable detail::Lock lock_;
  WeakRef<NSThread> targetThread_ ZEB_GUARDED_BY(lock_);
};

}  // namespace zeb
