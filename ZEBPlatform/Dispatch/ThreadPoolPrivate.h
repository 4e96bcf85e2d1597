#pragma once

#include <ZEBPlatform/Concurrency/detail/Condition.h>
#include <ZEBPlatform/Concurrency/detail/WorkItem.h>
#include <ZEBPlatform/Concurrency/detail/WorkList.h>
#include <ZEBPlatform/Memory/FunctionView.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zeb::detail {

template <class T>
class NeverDestroyed;

/// The urgency of work. Of the work that waits, the most urgent is taken first.
enum class Urgency : std::uint8_t { userInteractive, userInitiated, standard, utility, background };
inline constexpr std::size_t urgencyCount = 5;

/// The process's threads for queued work. While work waits, the pool keeps as many runnable threads
/// as there are processors: a thread that blocks in a wait of this library is replaced at once, a
/// thread that blocks in any other way within some milliseconds, up to `maxThreads`. The pool is
/// made at the first use and never destroyed, because blocks may still be queued and run while the
/// process exits.
///
/// Work that a blocked thread waits for goes ahead of all other work. If no ordinary thread is free
/// for it, it gets threads of a reserve, which run nothing else and are limited by the same rule.
/// So it runs at once even if all ordinary threads are busy or blocked.
class ThreadPool {
 public:
  /// Limit of the ordinary threads, and separately of the reserve. It is reached only if hundreds
  /// of threads are blocked; further work then waits until one of them continues.
  static constexpr std::size_t maxThreads = 512;

  static ThreadPool& shared();

  /// Takes the item over and has it run: by its runner, or if it has none by run() and dispose().
  /// What a thread did before the call is visible to the item. Any thread.
  void submit(WorkItem& item, Urgency urgency) ZEB_EXCLUDES(lock, watchLock_);
  /// Like submit(), for work that a thread waits for.
  void submitAwaited(WorkItem& item) ZEB_EXCLUDES(lock, watchLock_);

  /// Whether any work is queued.
  bool hasWaitingWork() const noexcept;
  /// Whether work that a thread waits for is queued.
  bool hasAwaitedWork() const noexcept { return !awaited_.isEmpty(); }

  /// While the scope lives, the calling thread counts as blocked, and the pool runs another thread
  /// in its place. On threads outside the pool it only calls `submit`.
  class BlockingScope {
   public:
    /// `submit` is called as soon as the thread counts as blocked. It submits the work that the
    /// thread will wait for, and answers whether there was any.
    explicit BlockingScope(FunctionView<bool()> submit = nullptr) noexcept;
    BlockingScope(const BlockingScope&) = delete;
    BlockingScope& operator=(const BlockingScope&) = delete;
    ~BlockingScope();
  };

 private:
  struct Worker;

  static Lock lock;

  /// Threads that run the same kind of work. The thread that went to sleep last is woken first: its
  /// memory is still in the processor's cache, and surplus threads sleep on until they end.
  struct WorkerGroup {
    std::atomic<std::size_t> sleeping{0};
    std::atomic<std::size_t> threads{0};
    std::atomic<std::size_t> blocked{0};
    Worker* lastSleeper ZEB_GUARDED_BY(lock) = nullptr;
    std::vector<Worker*> workers ZEB_GUARDED_BY(lock);
  };

  /// The state of one thread of the pool. It lies on that thread's stack.
  struct Worker {
    explicit Worker(WorkerGroup& ofGroup) noexcept;

    WorkerGroup& group;
    const int identifier;
    std::atomic<int> blockingScopes{0};
    Condition wake;
    bool isWoken ZEB_GUARDED_BY(lock) = false;
    Worker* nextSleeper ZEB_GUARDED_BY(lock) = nullptr;
  };

  friend class NeverDestroyed<ThreadPool>;
  ThreadPool();

  void work(WorkerGroup& group) ZEB_EXCLUDES(lock, watchLock_);
  bool hasWorkFor(const WorkerGroup& group) const noexcept;
  WorkItem* takeFor(const WorkerGroup& group) noexcept;
  WorkItem* spinForWork();
  bool sleepUntilWoken(Worker& worker) ZEB_EXCLUDES(lock);
  bool isSurplus(const WorkerGroup& group) const noexcept;
  void wakeOrGrow() ZEB_EXCLUDES(lock, watchLock_);
  void watchWaitingWork() ZEB_EXCLUDES(watchLock_);
  bool wake(WorkerGroup& group) ZEB_EXCLUDES(lock);
  bool growIfShort(WorkerGroup& group);
  bool startThread(WorkerGroup& group);
  bool mayRunMore() const noexcept;
  void watch() ZEB_EXCLUDES(lock, watchLock_);
  bool replaceBlocked(WorkerGroup& group) ZEB_EXCLUDES(lock);

  static thread_local Worker* currentWorker;

  const std::size_t processors_;
  WorkList awaited_;
  std::array<WorkList, urgencyCount> waiting_;
  alignas(64) std::atomic<std::size_t> spinning_{0};  ///< ordinary threads that look for work
  WorkerGroup ordinary_;
  WorkerGroup reserve_;
  std::atomic<bool> isWatched_{false};

  Lock watchLock_;  ///< held to wait for a change of `isWatched_` and to notify of it
  Condition watch_;
};

}  // namespace zeb::detail
