#pragma once

#include <Observation/Observable.h>
#include <ZEBPlatform/Dispatch/detail/MainQueue.h>
#include <ZEBPlatform/Linux/detail/Thread.h>
#include <gtest/gtest.h>

#include <deque>
#include <mutex>

#include "Support/Support.h"

namespace zeb::test {

/// A dispatch queue that counts the posted blocks and runs them only when it is asked to, on the
/// asking thread.
class HeldQueue final : public DispatchQueue {
 public:
  HeldQueue() : DispatchQueue("held") {}
  ~HeldQueue() override { run(items_.size()); }

  void async(detail::WorkItem& item) noexcept override {
    std::lock_guard guard(mutex_);
    items_.push_back(&item);
  }
  void barrierAsync(detail::WorkItem& item) noexcept override { async(item); }
  void sync(FunctionView<void()>) override { std::terminate(); }
  void barrierSync(FunctionView<void()>) override { std::terminate(); }

  /// Waits until `count` blocks have been posted.
  void await(std::size_t count) {
    const auto size = [&] {
      std::lock_guard guard(mutex_);
      return items_.size();
    };
    waitUntil([&] { return size() >= count; }, "enough blocks have been posted");
    EXPECT_EQ(size(), count);
  }
  void run(std::size_t count) {
    for (; count > 0; --count) {
      std::unique_lock guard(mutex_);
      detail::WorkItem* item = items_.front();
      items_.pop_front();
      guard.unlock();
      item->run();
      item->dispose();
    }
  }
  void awaitAndRun(std::size_t count) {
    await(count);
    run(count);
  }

 private:
  std::mutex mutex_;
  std::deque<detail::WorkItem*> items_;
};

/// Runs the main queue until the condition holds.
template <class Condition>
void runMainQueueUntil(const Condition& condition) {
  const auto holds = [&] {
    detail::runMainQueue();
    return condition();
  };
  waitUntil(holds, "the main queue has done its work");
}

}  // namespace zeb::test
