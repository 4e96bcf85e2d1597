#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Dispatch/detail/BlockingWait.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Linux/detail/CallStack.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBPlatform/RunLoop/LoopTimePrivate.h>
#include <ZEBPlatform/RunLoop/NSThread.h>
#include <ZEBPlatform/RunLoop/PostedBlockPrivate.h>
#include <ZEBPlatform/RunLoop/RunLoopCorePrivate.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <span>
#include <string>
#include <thread>
#include <utility>

namespace zeb {

constinit const char* const NSThreadWillExitNotification = "NSThreadWillExitNotification";

/// The calling thread's own `NSThread`.
class NSThread::Current {
 public:
  static Ref<NSThread> get() {
    if (isOver_) return afterTheEnd();
    if (!current_.thread_) {
      current_.thread_ =
          zeb::isMainThread() ? mainThread() : Ref<NSThread>::adopt(new NSThread(ForeignThread{}));
      const detail::LockGuard guard(current_.thread_->lock_);
      current_.thread_->handle_ = currentThreadHandle();
    }
    return current_.thread_;
  }
  static void set(Ref<NSThread> thread) { current_.thread_ = std::move(thread); }

  ~Current() {
    isOver_ = true;
    // The main thread's loop may be used until the process has ended.
    if (thread_ && !thread_->isMain_) thread_->finish();
  }

 private:
  /// For destructors of other thread-local objects: an `NSThread` whose loop has ended.
  static Ref<NSThread> afterTheEnd() {
    if (zeb::isMainThread()) return mainThread();
    Ref<NSThread> thread = Ref<NSThread>::adopt(new NSThread(ForeignThread{}));
    thread->finish();
    return thread;
  }

  static thread_local Current current_;
  static constinit thread_local bool isOver_;

  Ref<NSThread> thread_;
};

thread_local NSThread::Current NSThread::Current::current_;
constinit thread_local bool NSThread::Current::isOver_ = false;

NSThread::NSThread(Block<void()> block)
    : isMain_(false), runLoop_(NSRunLoop::make(isMain_)), block_(std::move(block)) {}

NSThread::NSThread(MainThread)
    : isMain_(true), phase_(Phase::started), runLoop_(NSRunLoop::make(isMain_)) {}

NSThread::NSThread(ForeignThread)
    : isMain_(false), phase_(Phase::started), runLoop_(NSRunLoop::make(isMain_)) {
  runLoop_->core().adopt();
}

NSThread::~NSThread() { finish(); }

void NSThread::detachNewThreadWithBlock(Block<void()> block) {
  makeRef<NSThread>(std::move(block))->start();
}

Ref<NSThread> NSThread::currentThread() { return Current::get(); }

const Ref<NSThread>& NSThread::mainThread() {
  static const detail::NeverDestroyed<Ref<NSThread>> thread(
      Ref<NSThread>::adopt(new NSThread(MainThread{})));
  return *thread;
}

// Not inlined, so that the return address is the caller's.
[[gnu::noinline]] NSArray NSThread::callStackSymbols() {
  constexpr std::size_t maxFrames = 128;
  constexpr std::size_t maxOwnFrames = 4;
  std::array<void*, maxFrames + maxOwnFrames> addresses;
  const std::span<void*> all(addresses.data(), captureCallStack(addresses));
  const auto caller = std::ranges::find(all, __builtin_return_address(0));
  const auto first = caller == all.end() ? all.begin() : caller;
  const auto count = std::min<std::size_t>(maxFrames, static_cast<std::size_t>(all.end() - first));
  NSMutableArray symbols;
  for (const std::string& line : callStackTexts({first, count})) symbols.addObject(line);
  return symbols.copy();
}

void NSThread::sleepForTimeInterval(NSTimeInterval seconds) {
  // The standard library's clocks cannot count longer.
  constexpr NSTimeInterval aCentury = 100.0 * 366 * 24 * 60 * 60;
  if (!(seconds > 0)) return;
  std::this_thread::sleep_for(std::chrono::duration<double>(std::min(seconds, aCentury)));
}

void NSThread::sleepUntilDate(const NSDate& date) {
  sleepForTimeInterval(date.timeIntervalSinceDate(NSDate::date()));
}

void NSThread::start() {
  Phase expected = Phase::made;
  if (!phase_.compare_exchange_strong(expected, Phase::started)) {
    raiseInvalidArgument("the thread was started before");
  }
  const auto enter = [](void* thread) {
    Ref<NSThread>::adopt(static_cast<NSThread*>(thread))->run();
  };
  retain();
  if (startThread(stackSize(), enter, this)) return;
  phase_ = Phase::made;
  release();
  throw NSException(NSGenericException, "the system has no more threads");
}

void NSThread::run() noexcept {
  Current::set(Ref<NSThread>(this));
  runLoop_->core().adopt();
  Block<void()> block;
  {
    const detail::LockGuard guard(lock_);
    handle_ = currentThreadHandle();
    if (!name_.isNil()) setThreadName(*handle_, name_.utf8());
    block = std::exchange(block_, nullptr);
  }
  if (block && !isCancelled()) block();
  NSNotificationCenter::defaultCenter()->postNotificationName(NSThreadWillExitNotification,
                                                              Ref<NSThread>(this));
  block = nullptr;
  finish();
}

/// Called by the thread itself or by the release of its last reference. Later calls do nothing.
void NSThread::finish() noexcept {
  if (phase_.exchange(Phase::finished) == Phase::finished) return;
  {
    const detail::LockGuard guard(lock_);
    handle_.reset();
  }
  // A system call, on return from which the system runs the handlers of the signals that were sent
  // before. So they have finished when the thread's blocks are dropped.
  std::this_thread::yield();
  dictionary_ = nullptr;
  runLoop_->core().close();
}

void NSThread::cancel() noexcept { isCancelled_ = true; }
bool NSThread::isCancelled() const noexcept { return isCancelled_; }
bool NSThread::isExecuting() const noexcept { return phase_ == Phase::started; }
bool NSThread::isFinished() const noexcept { return phase_ == Phase::finished; }
bool NSThread::isMainThread() const noexcept { return isMain_; }

std::optional<ThreadHandle> NSThread::handle() const {
  const detail::LockGuard guard(lock_);
  return handle_;
}

bool NSThread::sendSignal(int signal) const {
  // The thread needs the lock to end.
  const detail::LockGuard guard(lock_);
  return handle_ && zeb::sendSignal(*handle_, signal);
}

NSString NSThread::name() const {
  const detail::LockGuard guard(lock_);
  return name_;
}

void NSThread::setName(const NSString& name) {
  const detail::LockGuard guard(lock_);
  name_ = name.copy();
  if (handle_ && !isMain_) setThreadName(*handle_, name_.utf8());
}

std::size_t NSThread::stackSize() const {
  const detail::LockGuard guard(lock_);
  return stackSize_;
}

void NSThread::setStackSize(std::size_t bytes) {
  const detail::LockGuard guard(lock_);
  stackSize_ = bytes;
}

const Ref<NSRunLoop>& NSThread::runLoop() const noexcept { return runLoop_; }

NSMutableDictionary NSThread::threadDictionary() {
  if (dictionary_.isNil()) dictionary_ = NSMutableDictionary();
  return dictionary_;
}

namespace detail {

const NSArray& commonModes() {
  static const NeverDestroyed<NSArray> modes(NSArray{NSRunLoopCommonModes});
  return *modes;
}

void performAndWait(const Ref<NSThread>& thread, FunctionView<void()> block, const NSArray& modes) {
  if (!block) return;
  if (NSThread::currentThread() == thread) {
    block();
    return;
  }
  // Opens the gate when the posted block is destroyed, whether it was called or dropped.
  class Opener {
   public:
    explicit Opener(ThreadGate& gate) : gate_(&gate) {}
    Opener(Opener&& other) noexcept : gate_(std::exchange(other.gate_, nullptr)) {}
    Opener(const Opener&) = delete;
    Opener& operator=(const Opener&) = delete;
    ~Opener() {
      if (gate_) gate_->open();
    }

   private:
    ThreadGate* gate_;
  };
  ThreadGate gate;
  WorkItem& item = *newWorkItem([block, opener = Opener(gate)] { block(); });
  item.runner = new PostedBlock(modes, nullptr);
  if (modes.count() == 0 || !thread->runLoop()->core().post(item)) PostedBlock::dropAtOnce(item);
  waitUntilOpen(gate);
}

}  // namespace detail

}  // namespace zeb
