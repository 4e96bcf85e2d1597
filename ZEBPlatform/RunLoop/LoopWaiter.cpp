#include <ZEBPlatform/RunLoop/LoopWaiterPrivate.h>

#include <utility>

namespace zeb::detail {

bool LoopWaiter::Descriptors::areUsable() const noexcept {
  return event.descriptor() >= 0 && timer.descriptor() >= 0 && pollSet.descriptor() >= 0;
}

bool LoopWaiter::reserveDescriptors() noexcept {
  if (pollSet()) return true;
  const LockGuard guard(lock_);
  if (ownedDescriptors_) return true;
  auto descriptors = std::make_unique<Descriptors>();
  if (!descriptors->areUsable()) return false;
  descriptors->pollSet.watchChanges(descriptors->event.descriptor());
  descriptors->pollSet.watch(descriptors->timer.descriptor(), {.isReadable = true});
  ownedDescriptors_ = std::move(descriptors);
  descriptors_.store(ownedDescriptors_.get(), std::memory_order_release);
  // After the store, so that a thread that sleeps without them, or is about to, finds them.
  sleep_.wake();
  return true;
}

void LoopWaiter::wake() noexcept {
  if (Descriptors* const descriptors = descriptors_.load(std::memory_order_acquire)) {
    descriptors->event.signal();
  } else {
    sleep_.wake();
  }
}

void LoopWaiter::setMoment(std::uint64_t moment) noexcept {
  waitedFor_ = descriptors_.load(std::memory_order_acquire);
  if (!waitedFor_) {
    sleep_.setMoment(moment);
  } else if (std::exchange(waitedFor_->moment, moment) != moment) {
    waitedFor_->timer.setMoment(moment);
  }
}

void LoopWaiter::wait() noexcept {
  if (waitedFor_) {
    waitedFor_->pollSet.wait();
  } else {
    sleep_.sleep();
  }
}

}  // namespace zeb::detail
