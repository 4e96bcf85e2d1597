#pragma once

#include <ZEBPlatform/Dispatch/SerialQueuePrivate.h>

namespace zeb::detail {

/// The queue of the main thread. Its items run in calls of `runItemsOnMainThread`.
class MainQueue final : public SerialQueue {
 public:
  MainQueue();

  void sync(FunctionView<void()> block) override;
  void setWaker(void (*wake)());
  /// A block that throws ends the process here, because code that calls the run loop may catch.
  [[nodiscard]] bool runItemsOnMainThread() noexcept;

 private:
  void schedule() noexcept override;

  std::atomic<bool> isReady_{false};  ///< there are items, and no thread runs them
  std::atomic<void (*)()> wake_{nullptr};
};

}  // namespace zeb::detail
