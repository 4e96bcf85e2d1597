#pragma once

#include <Dispatch/WorkItem.h>
#include <Dispatch/WorkList.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

namespace zeb::detail {

/// How urgent work is: more urgent work that waits is taken first.
enum class Urgency : std::uint8_t { userInteractive, userInitiated, standard, utility, background };
inline constexpr std::size_t urgencyCount = 5;

/// The process's threads for queued work. While work waits there are as many threads that can run as
/// there are processors: one that blocks in a wait of this library is replaced at once, one that blocks
/// in any other way within some milliseconds, up to `mostThreads`. Made on first use and never
/// destroyed, so that work which is queued while the process exits has threads to lie on.
class ThreadPool {
 public:
  /// Reached only with hundreds of blocked threads; then work waits until one of them goes on.
  static constexpr std::size_t mostThreads = 512;

  static ThreadPool& shared();

  /// Any thread. The item is run by its runner, or else run and disposed of.
  void submit(WorkItem& item, Urgency urgency);

  /// Whether somebody else's work waits for a thread.
  bool hasWaitingWork() const noexcept;

  /// For as long as it lives, the calling thread counts as blocked and another one takes its place. Does
  /// nothing on threads that are not the pool's.
  class BlockingScope {
   public:
    BlockingScope() noexcept;
    BlockingScope(const BlockingScope&) = delete;
    BlockingScope& operator=(const BlockingScope&) = delete;
    ~BlockingScope();
  };

 private:
  ThreadPool();

  void work();
  WorkItem* take() noexcept;
  WorkItem* lookForWork();
  bool sleepUntilWoken();
  void wakeOrGrow();
  bool growIfShort();
  void startThread();
  void watch();

  const std::size_t processors_;
  std::array<WorkList, urgencyCount> waiting_;
  alignas(64) std::atomic<std::size_t> spinning_{0};
  std::atomic<std::size_t> sleeping_{0};
  std::atomic<std::size_t> threads_{0};
  std::atomic<std::size_t> blocked_{0};
  std::atomic<bool> isWatched_{false};

  std::mutex mutex_;
  std::condition_variable wake_;
  std::size_t wakeUps_ = 0;  ///< given and not yet taken
  std::vector<int> threadIdentifiers_;

  std::mutex watchMutex_;
  std::condition_variable watch_;
};

}  // namespace zeb::detail
