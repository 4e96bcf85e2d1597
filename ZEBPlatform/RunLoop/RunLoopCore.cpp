#include <ZEBPlatform/Concurrency/detail/Spin.h>
#include <ZEBPlatform/Dispatch/detail/MainQueue.h>
#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBPlatform/Linux/detail/Thread.h>
#include <ZEBPlatform/RunLoop/PostedBlockPrivate.h>
#include <ZEBPlatform/RunLoop/RunLoopCorePrivate.h>

#include <algorithm>
#include <array>
#include <utility>

namespace zeb::detail {

namespace {

/// The blocks that run at most before timers and descriptors have their turn again.
constexpr std::size_t maxBlocksPerPass = 256;

/// About as long as the system takes to wake a sleeping thread.
constexpr int maxSpinsForNews = 400;

constinit std::atomic<RunLoopCore*> mainCore{nullptr};

/// Different for each thread that runs.
const void* currentThreadMark() noexcept {
  static thread_local const char mark = 0;
  return &mark;
}

}  // namespace

/// One run of the loop that is in progress. A run from inside a callback is nested in the outer
/// one.
class RunLoopCore::RunFrame {
 public:
  RunFrame(RunLoopCore& core, RunLoopMode& itsMode) : mode(itsMode), core_(core) {
    const LockGuard guard(core_.frameLock_);
    outer_ = std::exchange(core_.frame_, this);
  }
  RunFrame(const RunFrame&) = delete;
  RunFrame& operator=(const RunFrame&) = delete;
  ~RunFrame() {
    const LockGuard guard(core_.frameLock_);
    core_.frame_ = outer_;
  }

  RunLoopMode& mode;
  std::atomic<bool> isStopped{false};

 private:
  RunLoopCore& core_;
  RunFrame* outer_;
};

// For any thread.

bool RunLoopCore::post(WorkItem& item) noexcept {
  const LoopInbox::Outcome outcome = inbox_.push(item);
  if (outcome == LoopInbox::Outcome::mustWake) waiter_.wake();
  return outcome != LoopInbox::Outcome::closed;
}

void RunLoopCore::requestPass() noexcept {
  if (inbox_.requestPass() == LoopInbox::Outcome::mustWake) waiter_.wake();
}

void RunLoopCore::mainQueueIsReady() noexcept {
  isMainQueueReady_.store(true, std::memory_order_release);
  requestPass();
}

void RunLoopCore::stop() noexcept {
  {
    const LockGuard guard(frameLock_);
    if (!frame_) return;
    frame_->isStopped.store(true, std::memory_order_relaxed);
  }
  requestPass();
}

void RunLoopCore::observerWasAdded() noexcept {
  if (isHosted_) requestPass();
}

bool RunLoopCore::canWatch(int descriptor) noexcept {
  return waiter_.reserveDescriptors() && modes_.canWatch(descriptor, *waiter_.pollSet());
}

void RunLoopCore::watch(int descriptor) {
  if (PollSet* const pollSet = waiter_.pollSet()) modes_.watch(descriptor, *pollSet);
}

void RunLoopCore::remove(RunLoopItem& item) {
  const auto released = modes_.remove(item);
  unwatchIfDescriptor(item);
}

void RunLoopCore::remove(RunLoopItem& item, const NSString& modeName) {
  const auto released = modes_.remove(item, modeName);
  unwatchIfDescriptor(item);
}

void RunLoopCore::unwatchIfDescriptor(const RunLoopItem& item) {
  if (item.kind_ != Kind::descriptorSource) return;
  watch(static_cast<const RunLoopDescriptorSource&>(item).descriptor());
}

void RunLoopCore::adopt() noexcept {
  ownThread_.store(currentThreadMark(), std::memory_order_relaxed);
  if (!isMain_) return;
  mainCore.store(this);
  setMainQueueWaker([] { mainCore.load()->mainQueueIsReady(); });
}

void RunLoopCore::requireOwnThread() noexcept {
  if (ownThread_.load(std::memory_order_relaxed) == currentThreadMark()) return;
  if (!isMain_ || !isMainThread()) fatal("A run loop was used on a thread that is not its own.");
  adopt();  // the main thread comes here for the first time
}

void RunLoopCore::close() noexcept {
  pending_.append(inbox_.close());
  for (const Ref<RunLoopItem>& item : modes_.close()) item->invalidate();
  pending_.dropAll();  // last, because it lets threads go on that wait for a block
}

// For the loop's own thread.

bool RunLoopCore::run(const NSString& modeName, std::uint64_t limit, bool endsAfterInput) {
  requireOwnThread();
  const RunLoopModes::Run run(modes_, modeName);
  const bool didRun = runFrame(run.mode(), limit, endsAfterInput);
  if (isHosted_) leaveWaitingToHost();
  return didRun;
}

bool RunLoopCore::runFrame(RunLoopMode& mode, std::uint64_t limit, bool endsAfterInput) {
  RunFrame frame(*this, mode);
  beginRun();
  takePosted();
  const RunLoopModes::Outlook outlook = modes_.outlook(mode);
  if (!hasWork(mode, outlook) && !canGetWork(mode, outlook)) return false;
  notify(frame, RunLoopEntry);
  while (!frame.isStopped) {
    const bool didHandleInput = pass(frame);
    if (frame.isStopped || (endsAfterInput && didHandleInput)) break;
    if (limit != UINT64_MAX && mach_absolute_time() >= limit) break;
    const RunLoopModes::Outlook next = modes_.outlook(mode);
    if (hasWork(mode, next)) continue;
    if (!canGetWork(mode, next)) break;
    notify(frame, RunLoopBeforeWaiting);
    wait(frame, limit);
    notify(frame, RunLoopAfterWaiting);
  }
  notify(frame, RunLoopExit);
  return true;
}

/// The descriptors whose blocks run the loop may stay ready, which must not keep it from sleeping.
void RunLoopCore::beginRun() {
  ++runs_;
  for (RunLoopDescriptorSource* const source : calledSources_) {
    source->setResting(true);
    watch(source->descriptor());
  }
}

/// Does everything that is ready once. Whether anything other than a timer was handled.
bool RunLoopCore::pass(RunFrame& frame) {
  notify(frame, RunLoopBeforeTimers);
  fireDueTimers(frame);
  notify(frame, RunLoopBeforeSources);
  bool didHandleInput = runBlocks(frame);
  didHandleInput |= runSources(frame);
  didHandleInput |= runMainQueue(frame);
  didHandleInput |= handleDescriptors(frame);
  return didHandleInput;
}

void RunLoopCore::fireDueTimers(RunFrame& frame) {
  const std::uint64_t now = mach_absolute_time();
  while (!frame.isStopped) {
    const Ref<NSTimer> timer = modes_.takeDueTimer(frame.mode, now);
    if (!timer) return;
    timer->fireIfDue();
  }
}

bool RunLoopCore::runBlocks(RunFrame& frame) {
  takePosted();
  bool didRun = false;
  for (std::size_t left = std::min(pending_.count(), maxBlocksPerPass); left > 0; --left) {
    if (frame.isStopped.load(std::memory_order_relaxed)) break;
    WorkItem* const item = pending_.takeFirst(frame.mode);
    if (!item) break;
    PostedBlock::run(*item);
    didRun = true;
  }
  didRunBlocks_ |= didRun;
  return didRun;
}

bool RunLoopCore::runSources(RunFrame& frame) {
  bool didRun = false;
  if (!modes_.hasAny(Kind::source)) return didRun;
  // A source that signals itself again is handled in the next pass.
  for (const Ref<RunLoopSource>& source : modes_.pendingSources(frame.mode)) {
    if (frame.isStopped) break;
    didRun |= source->perform();
  }
  return didRun;
}

bool RunLoopCore::runMainQueue(RunFrame& frame) {
  if (!frame.mode.isCommon || frame.isStopped || !isMainQueueReady_.exchange(false)) return false;
  if (detail::runMainQueue()) isMainQueueReady_ = true;
  return true;
}

bool RunLoopCore::handleDescriptors(RunFrame& frame) {
  if (!modes_.hasAny(Kind::descriptorSource)) return false;
  PollSet& pollSet = *waiter_.pollSet();  // without one, no source was added
  modes_.watchMode(frame.mode, pollSet);
  std::array<ReadyDescriptor, 64> ready;
  const std::size_t count = pollSet.collect(ready);
  // Collecting cleared the wake-up that the host's loop waits for, and a callback may run that
  // loop.
  if (isHosted_ && count > 0) waiter_.wake();
  const std::uint64_t runs = runs_;
  bool didCall = false;
  for (std::size_t index = 0; index < count; ++index) {
    for (const auto& source : modes_.sourcesOf(frame.mode, ready[index].descriptor)) {
      // A run from inside a callback has handled everything else that was ready; later events are
      // reported again.
      if (frame.isStopped || runs != runs_) return didCall;
      didCall |= call(*source, ready[index].readiness);
    }
  }
  return didCall;
}

bool RunLoopCore::call(RunLoopDescriptorSource& source, Readiness readiness) {
  std::uint32_t events = 0;
  if (readiness.isReadable) events |= DescriptorReadable;
  if (readiness.isWritable) events |= DescriptorWritable;
  calledSources_.push_back(&source);
  const bool didCall = source.handle(events);
  calledSources_.pop_back();
  if (source.isResting()) {
    source.setResting(false);
    watch(source.descriptor());
  }
  return didCall;
}

void RunLoopCore::notify(RunFrame& frame, RunLoopActivity activity) {
  if (!modes_.hasAny(Kind::observer)) return;
  for (const auto& observer : modes_.observersOf(frame.mode, activity)) observer->notify(activity);
}

bool RunLoopCore::hasWork(RunLoopMode& mode, const RunLoopModes::Outlook& outlook) noexcept {
  if (pending_.hasAny(mode) || inbox_.hasItems() || outlook.hasPendingSource) return true;
  if (mode.isCommon && isMainQueueReady_) return true;
  return outlook.nextWakeUp != UINT64_MAX && outlook.nextWakeUp <= mach_absolute_time();
}

/// Whether the mode has anything to wait for.
bool RunLoopCore::canGetWork(RunLoopMode& mode,
                             const RunLoopModes::Outlook& outlook) const noexcept {
  return outlook.hasTimers || outlook.hasInputs || (isMain_ && mode.isCommon);
}

void RunLoopCore::wait(RunFrame& frame, std::uint64_t limit) {
  // Read again, because an observer may have added something.
  const RunLoopModes::Outlook outlook = modes_.outlook(frame.mode);
  if (frame.isStopped || hasWork(frame.mode, outlook)) return;
  if (waiter_.reserveDescriptors()) modes_.watchMode(frame.mode, *waiter_.pollSet());
  waiter_.setMoment(std::min(outlook.nextWakeUp, limit));
  if (std::exchange(didRunBlocks_, false)) spinForNews();
  if (inbox_.tryToSleep()) waiter_.wait();
}

/// Blocks from another thread are often followed by more. Spinning for them costs less than
/// sleeping and being woken, as long as it takes no longer than that.
void RunLoopCore::spinForNews() const noexcept {
  if (!inbox_.hasNews()) spin(maxSpinsForNews, [this] { return inbox_.hasNews(); });
}

RunLoopModes::Outlook RunLoopCore::fireTimers(const NSString& modeName) {
  requireOwnThread();
  const RunLoopModes::Run run(modes_, modeName);
  RunFrame frame(*this, run.mode());
  fireDueTimers(frame);
  return modes_.outlook(frame.mode);
}

NSString RunLoopCore::currentMode() {
  requireOwnThread();
  const LockGuard guard(frameLock_);
  return frame_ ? frame_->mode.name : NSString();
}

void RunLoopCore::makeCommon(const NSString& modeName) {
  requireOwnThread();
  modes_.makeCommon(modeName, waiter_.pollSet());
  pending_.forgetWhatWasSkipped();
}

void RunLoopCore::dropBlocks(const void* target) {
  requireOwnThread();
  takePosted();
  pending_.drop(target);
  if (isHosted_) leaveWaitingToHost();
}

// For an application's own loop.

int RunLoopCore::pollableDescriptor() {
  requireOwnThread();
  if (!waiter_.reserveDescriptors()) return -1;
  isHosted_ = true;
  leaveWaitingToHost();
  return waiter_.pollSet()->descriptor();
}

void RunLoopCore::runPending() {
  requireOwnThread();
  // A callback may run the application's loop, which must not wait while there are callbacks left.
  waiter_.wake();
  {
    RunFrame frame(*this, modes_.defaultMode());
    beginRun();
    if (std::exchange(isHostWaiting_, false)) notify(frame, RunLoopAfterWaiting);
    pass(frame);
    if (!hasWork(frame.mode, modes_.outlook(frame.mode))) {
      notify(frame, RunLoopBeforeWaiting);
      isHostWaiting_ = true;
    }
  }
  leaveWaitingToHost();
}

/// Leaves the descriptor readable if there is something to do; otherwise the next event makes it
/// so.
void RunLoopCore::leaveWaitingToHost() {
  takePosted();  // requests to look around that came before this look are met by it
  RunLoopMode& mode = modes_.defaultMode();
  if (!waiter_.reserveDescriptors()) return;  // then the application has none of ours to wait for
  PollSet& pollSet = *waiter_.pollSet();
  modes_.watchMode(mode, pollSet);
  pollSet.forgetChanges();
  const RunLoopModes::Outlook outlook = modes_.outlook(mode);
  waiter_.setMoment(outlook.nextWakeUp);
  if (hasWork(mode, outlook) || !inbox_.tryToSleep()) waiter_.wake();
}

}  // namespace zeb::detail
