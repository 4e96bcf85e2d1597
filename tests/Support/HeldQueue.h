#pragma once

#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Dispatch/detail/MainQueue.h>
#include <ZEBPlatform/Linux/detail/Thread.h>

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
    const auto isPosted = [&] {
      std::lock_guard guard(mutex_);
      EXPECT_LE(items_.size(), count);
      return items_.size() >= count;
    };
    waitUntil(isPosted, "enough blocks have been posted");
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
inline void runMainQueueUntil(const std::function<bool()>& condition) {
  waitUntil(condition, "the main queue has done its work", detail::runMainQueue);
}

}  // namespace zeb::test
