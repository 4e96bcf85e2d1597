#pragma once

#include <ZEBPlatform/Dispatch/SerialQueuePrivate.h>

namespace zeb::detail {

/// The queue of the main thread. Its items run where `runItemsOnMainThread` is called.
class MainQueue final : public SerialQueue {
 public:
  MainQueue();

  void sync(FunctionView<void()> block) override;
  void setWaker(void (*wake)());
  /// An exception of a block ends the process here, for callers of the run loop may catch.
  bool runItemsOnMainThread() noexcept;

 private:
  void schedule() noexcept override;

  std::atomic<bool> isReady_{false};  ///< there are items, and nobody runs them
  std::atomic<void (*)()> wake_{nullptr};
};

}  // namespace zeb::detail
