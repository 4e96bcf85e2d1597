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

/// How urgent work is: more urgent work that waits is taken first.
enum class Urgency : std::uint8_t { userInteractive, userInitiated, standard, utility, background };
inline constexpr std::size_t urgencyCount = 5;

/// The process's threads for queued work. While work waits there are as many threads that can run as
/// there are processors: one that blocks in a wait of this library is replaced at once, one that blocks
/// in any other way within some milliseconds, up to `maxThreads`. Made on first use and never
/// destroyed, so that work which is queued while the process exits has threads to lie on.
///
/// Work that a blocked thread waits for goes ahead of all other work. Where no thread of the pool is free for it,
/// it gets threads of a reserve, which do nothing else and are as many under the same rule. So it is run though all
/// other threads are blocked, and at once though all are busy.
class ThreadPool {
 public:
  /// Of the pool, and again of the reserve. Reached only with hundreds of blocked threads; then work
  /// waits until one of them goes on.
  static constexpr std::size_t maxThreads = 512;

  static ThreadPool& shared();

  /// Any thread. The item is run by its runner, or else run and disposed of.
  void submit(WorkItem& item, Urgency urgency);
  /// The same for work that a thread waits for.
  void submitAwaited(WorkItem& item);

  /// Whether work waits for a thread.
  bool hasWaitingWork() const noexcept;
  /// Whether work that a thread waits for waits for a thread.
  bool hasAwaitedWork() const noexcept { return !awaited_.isEmpty(); }

  /// For as long as it lives, the calling thread counts as blocked and another one takes its place. Does
  /// nothing on threads that are not the pool's.
  class BlockingScope {
   public:
    /// `submit` is called on any thread, once the thread counts as blocked: to submit the work that it will
    /// wait for, and say whether there was any.
    explicit BlockingScope(FunctionView<bool()> submit = nullptr) noexcept;
    BlockingScope(const BlockingScope&) = delete;
    BlockingScope& operator=(const BlockingScope&) = delete;
    ~BlockingScope();
  };

 private:
  struct Worker;

  static Lock lock;

  /// Threads that take the same work. Who went to sleep last is woken first: so the threads that are not needed
  /// sleep on until they leave, and the one that runs has its memory at hand.
  struct Crew {
    std::atomic<std::size_t> sleeping{0};
    std::atomic<std::size_t> threads{0};
    std::atomic<std::size_t> blocked{0};
    Worker* lastSleeper ZEB_GUARDED_BY(lock) = nullptr;
    std::vector<Worker*> workers ZEB_GUARDED_BY(lock);
  };

  /// A thread of the pool, on its own stack.
  struct Worker {
    explicit Worker(Crew& ofCrew) noexcept;

    Crew& crew;
    const int identifier;
    std::atomic<int> blockingScopes{0};
    Condition wake;
    bool isWoken ZEB_GUARDED_BY(lock) = false;
    Worker* nextSleeper ZEB_GUARDED_BY(lock) = nullptr;
  };

  friend class NeverDestroyed<ThreadPool>;
  ThreadPool();

  void work(Crew& crew);
  bool hasWorkFor(const Crew& crew) const noexcept;
  WorkItem* takeFor(const Crew& crew) noexcept;
  WorkItem* lookForWork();
  bool sleepUntilWoken(Worker& worker);
  bool isSurplus(const Crew& crew) const noexcept;
  void wakeOrGrow();
  bool wake(Crew& crew);
  bool growIfShort(Crew& crew);
  bool startThread(Crew& crew);
  bool mayGrow() const noexcept;
  void watch();
  bool replaceBlocked(Crew& crew);

  static thread_local Worker* currentWorker;

  const std::size_t processors_;
  WorkList awaited_;
  std::array<WorkList, urgencyCount> waiting_;
  alignas(64) std::atomic<std::size_t> spinning_{0};  ///< of the ordinary threads
  Crew ordinary_;
  Crew reserve_;
  std::atomic<bool> isWatched_{false};

  Lock watchLock_;
  Condition watch_;
};

}  // namespace zeb::detail
