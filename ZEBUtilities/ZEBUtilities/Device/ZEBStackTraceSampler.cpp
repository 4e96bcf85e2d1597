#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Dispatch/DispatchSemaphore.h>
#include <ZEBPlatform/Linux/detail/CallStack.h>
#include <ZEBPlatform/Linux/detail/ProfilingSignal.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>
#include <ZEBUtilities/Device/NSThread+ZEBTraceSampler.h>
#include <ZEBUtilities/Device/StackRecordPrivate.h>
#include <ZEBUtilities/Device/ZEBStackTraceSampler.h>

#include <optional>
#include <span>
#include <string>
#include <thread>
#include <utility>

namespace zeb {

namespace {

constinit detail::StackRecord stackRecord;

void callstack_signal_handler(const void* context) { stackRecord.capture(context); }

/// Must run before the handler is first installed, so that the capture it drops is its own.
bool rehearseHandler() {
  prepareInterruptedCapture();
  rehearseProfilingHandler(&callstack_signal_handler);
  stackRecord.clear();
  return true;
}

/// Held while the signal's action changes and while a signal is sent, so that no signal meets the
/// default action.
detail::Lock& actionLock() {
  static detail::NeverDestroyed<detail::Lock> lock;
  return *lock;
}

/// The sampler that installed the handler last; null if it has restored the default action.
constinit const ZEBStackTraceSampler* lastInstaller = nullptr;  // guarded by actionLock()

/// Signals a semaphore when it is destroyed.
class SignalAtEnd {
 public:
  explicit SignalAtEnd(dispatch_semaphore_t semaphore) : semaphore_(std::move(semaphore)) {}
  SignalAtEnd(SignalAtEnd&&) noexcept = default;
  SignalAtEnd(const SignalAtEnd&) = delete;
  SignalAtEnd& operator=(const SignalAtEnd&) = delete;
  ~SignalAtEnd() {
    if (semaphore_) dispatch_semaphore_signal(semaphore_);
  }

 private:
  dispatch_semaphore_t semaphore_;
};

}  // namespace

ZEBStackTraceSampler::ZEBStackTraceSampler()
    : targetThreadId_(currentThreadHandle()), targetThread_(NSThread::currentThread()) {
  [[maybe_unused]] static const bool isRehearsed = rehearseHandler();
  const detail::LockGuard guard(actionLock());
  installProfilingHandler(&callstack_signal_handler);
  lastInstaller = this;
}

ZEBStackTraceSampler::~ZEBStackTraceSampler() { restoreAction(); }

void ZEBStackTraceSampler::restoreAction() noexcept {
  const detail::LockGuard guard(actionLock());
  if (lastInstaller != this) return;
  lastInstaller = nullptr;
  restoreDefaultProfilingAction();
}

const dispatch_queue_t& ZEBStackTraceSampler::queue() {
  static const detail::NeverDestroyed<dispatch_queue_t> queue(
      dispatch_queue_create(std::string(ZEBUtilitiesIdentifierPrefix) + ".tracessampler"));
  return *queue;
}

NSArray ZEBStackTraceSampler::callstackSymbols() {
  const Ref<NSThread> target = targetThread();
  if (target && target == NSThread::currentThread()) return NSThread::callStackSymbols();
  NSArray symbols;
  dispatch_sync(queue(), [&] { symbols = sample(); });
  return symbols;
}

/// On the sampler's queue.
NSArray ZEBStackTraceSampler::sample() {
  const Ref<NSThread> target = targetThread();
  interrupt(target);
  if (!target) return nullptr;

  NSArray symbols;
  bool isDelivered = false;
  const dispatch_semaphore_t semaphore = dispatch_semaphore_create(0);
  // The block is destroyed without a call if the thread ends, so its destructor signals.
  zeb_performBlockAsync(target, [&, signal = SignalAtEnd(semaphore)] {
    // A system call, on return from which the system runs the handler of a signal that was sent
    // before. So the capture is complete, however soon this block was called.
    std::this_thread::yield();
    const std::span<void* const> frames = stackRecord.frames();
    symbols = _stackWithProgramCounters(frames.data(), frames.size());
    stackRecord.clear();
    isDelivered = true;
  });
  dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER);
  // The capture of a thread that has ended must not be taken for that of the next thread. It is
  // complete: a thread's blocks are dropped only after its handlers have returned.
  if (!isDelivered) stackRecord.clear();
  return symbols;
}

/// Sends the signal unless the target thread has ended, because its handle is invalid then.
void ZEBStackTraceSampler::interrupt(const Ref<NSThread>& target) {
  const std::optional<ThreadHandle> ownHandle = target ? target->handle() : std::nullopt;
  if (!ownHandle && !hasNoTarget()) return;
  const detail::LockGuard guard(actionLock());
  if (!isProfilingHandlerInstalled()) return;
  if (ownHandle == targetThreadId_) {
    target->sendSignal(profilingSignal);
  } else {
    sendSignal(targetThreadId_, profilingSignal);
  }
}

NSArray ZEBStackTraceSampler::_stackWithProgramCounters(void* const* programCounters,
                                                        std::size_t length) {
  const auto count = static_cast<std::uint32_t>(length);
  if (!programCounters || count == 0) return nullptr;
  NSMutableArray lines;
  for (const std::string& line : callStackTexts({programCounters, count})) lines.addObject(line);
  return lines.copy();
}

Ref<NSThread> ZEBStackTraceSampler::targetThread() const {
  const detail::LockGuard guard(lock_);
  return targetThread_.lock();
}

bool ZEBStackTraceSampler::hasNoTarget() const {
  const detail::LockGuard guard(lock_);
  return targetThread_.isEmpty();
}

void ZEBStackTraceSampler::setTargetThread(const Ref<NSThread>& thread) {
  const detail::LockGuard guard(lock_);
  targetThread_ = thread;
}

Class* ZEBStackTraceSampler::runtimeClass() {
  using Self = ZEBStackTraceSampler;
  static Class* const cls =
      registerClass("ZEBStackTraceSampler",
                    {
                        classMethod("queue", &Self::queue),
                        classMethod("initWithCurrentThread", [] { return makeRef<Self>(); }),
                        method("callstackSymbols", &Self::callstackSymbols),
                        property("targetThreadId", &Self::targetThreadId, &Self::setTargetThreadId),
                        property("targetThread", &Self::targetThread, &Self::setTargetThread),
                    });
  return cls;
}

}  // namespace zeb
