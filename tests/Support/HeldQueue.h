#pragma once

#include <Observation/Observable.h>
#include <ZEBPlatform/Dispatch/detail/MainQueue.h>
#include <ZEBPlatform/Linux/detail/Thread.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace zeb::test {

/// A dispatch queue that counts what is posted to it and runs it only when asked to, on the asking thread.
class HeldQueue final : public DispatchQueue {
 public:
  HeldQueue() : DispatchQueue("held") {}
  ~HeldQueue() override { run(items_.size()); }

  void async(detail::WorkItem& item) noexcept override {
    std::lock_guard guard(mutex_);
    items_.push_back(&item);
    posted_.notify_all();
  }
  void barrierAsync(detail::WorkItem& item) noexcept override { async(item); }
  void sync(FunctionView<void()>) override { std::terminate(); }
  void barrierSync(FunctionView<void()>) override { std::terminate(); }

  /// Waits until so many blocks are there.
  void await(std::size_t count) {
    std::unique_lock lock(mutex_);
    posted_.wait(lock, [&] { return items_.size() >= count; });
    EXPECT_EQ(items_.size(), count);
  }
  void run(std::size_t count) {
    for (; count > 0; --count) {
      detail::WorkItem* item = nullptr;
      {
        std::lock_guard guard(mutex_);
        item = items_.front();
        items_.pop_front();
      }
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
  std::condition_variable posted_;
  std::deque<detail::WorkItem*> items_;
};

/// Runs the main queue until the condition holds.
template <class Condition>
void runMainQueueUntil(const Condition& condition) {
  while (!condition()) detail::runMainQueue();
}

}  // namespace zeb::test
