#include <ZEBPlatform/Concurrency/detail/Seconds.h>
#include <ZEBPlatform/RunLoop/RunLoopModesPrivate.h>

#include <algorithm>

namespace zeb::detail {

void RunLoopModes::insertTimer(NSTimer& timer, RunLoopMode& mode) {
  const auto isInMode = [&](auto& node) { return &node->mode == &mode; };
  if (std::ranges::any_of(timer.nodes_, isInMode)) return;
  timer.nodes_.push_back(std::make_unique<TimerNode>(Ref(&timer), mode));
  ++mode.timerCount;
}

void RunLoopModes::removeTimer(NSTimer& timer, ReleasedItems& released) {
  for (const auto& node : timer.nodes_) {
    node->mode.timers.remove(*node);
    released.push_back(node->timer);
    --node->mode.timerCount;
    forgetIfUnused(node->mode);
  }
  timer.nodes_.clear();
}

/// The timer's tolerance becomes the leeway of its nodes. The loop wakes up at the earliest sum of
/// a deadline and its leeway, and then fires all timers whose deadlines have passed.
bool RunLoopModes::schedule(NSTimer& timer) {
  const LockGuard guard(lock_);
  const std::uint64_t leeway = ticksIn(timer.tolerance_);
  bool isSooner = false;
  for (const auto& node : timer.nodes_) {
    DeadlineHeap& timers = node->mode.timers;
    const std::uint64_t before = timers.nextWakeUp();
    node->deadline = std::max(timer.moment_, latestMoment_ + 1);
    node->leeway = leeway;
    timers.put(*node);
    isSooner |= timers.nextWakeUp() < before;
  }
  return isSooner;
}

Ref<NSTimer> RunLoopModes::takeDueTimer(RunLoopMode& mode, std::uint64_t moment) {
  const LockGuard guard(lock_);
  latestMoment_ = std::max(latestMoment_, moment);
  DeadlineNode* due = nullptr;
  visitActive(mode, [&](RunLoopMode& active) {
    if (!due) due = active.timers.takeDue(moment);
  });
  return due ? static_cast<TimerNode*>(due)->timer : nullptr;
}

}  // namespace zeb::detail
