#pragma once

#include <ZEBPlatform/Concurrency/detail/WorkItemMemory.h>

#include <atomic>
#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

namespace zeb::detail {

class WorkItem;

/// Runs items with additional work of its own: a concurrent queue, for example, counts its running
/// items.
class WorkRunner {
 public:
  /// Runs and disposes of the item.
  virtual void runItem(WorkItem& item) = 0;

 protected:
  ~WorkRunner() = default;
};

/// A closure of any type that passes through queues and is run once, on any thread.
///
/// Lifetime: the queue that holds the item owns it. It calls exactly one of run() and discard(),
/// then dispose(), after which the item must not be used.
/// Memory ordering: the item has none of its own; the list that passes it on orders the threads.
/// Size: 24 bytes and the closure. Cost: one allocation, and one indirect call for each operation.
class WorkItem {
 public:
  enum class Operation { run, discard, dispose };
  using Operate = void (*)(WorkItem& item, Operation operation);

  explicit WorkItem(Operate operate) noexcept : operate_(operate) {}
  WorkItem(const WorkItem&) = delete;
  WorkItem& operator=(const WorkItem&) = delete;

  /// Calls the closure and destroys it. The item itself stays, because a list may still link it.
  ///
  /// A closure that throws ends the process. Between this function and the first function of a pool
  /// thread nothing catches and nothing is `noexcept`, so the process stops where the exception was
  /// thrown and a debugger shows the throwing stack. Code that runs items on other threads must not
  /// let the exception pass.
  void run() { operate_(*this, Operation::run); }
  /// Destroys the closure without calling it.
  void discard() noexcept { operate_(*this, Operation::discard); }
  /// Frees the item's memory.
  void dispose() noexcept { operate_(*this, Operation::dispose); }

  bool isOperatedBy(Operate operate) const noexcept { return operate_ == operate; }

  /// The next item of the list that holds this one.
  std::atomic<WorkItem*> next{nullptr};
  /// Runs and disposes of the item instead of run() and dispose(), if not null. Set before the item
  /// is passed on.
  WorkRunner* runner = nullptr;

 protected:
  ~WorkItem() = default;

 private:
  Operate operate_;
};

/// Lets the item's runner run it; without a runner, runs the item and disposes of it.
inline void runAndDispose(WorkItem& item) {
  if (item.runner) return item.runner->runItem(item);
  item.run();
  item.dispose();
}

/// A work item that contains its closure, so that posting costs one allocation.
template <class Closure>
class ClosureItem final : public WorkItem {
 public:
  template <class Source>
  explicit ClosureItem(Source&& source)
      : WorkItem(&operate), closure_(std::forward<Source>(source)) {}
  ~ClosureItem() {}

  static void* operator new(std::size_t size) {
    return fitsBlock ? WorkItemMemory::allocate() : ::operator new(size);
  }
  static void operator delete(void* item) noexcept {
    fitsBlock ? WorkItemMemory::free(item) : ::operator delete(item);
  }
  static void* operator new(std::size_t size, std::align_val_t alignment) {
    return ::operator new(size, alignment);
  }
  static void operator delete(void* item, std::align_val_t alignment) noexcept {
    ::operator delete(item, alignment);
  }

 private:
  static constexpr bool fitsBlock =
      sizeof(WorkItem) + sizeof(Closure) <= WorkItemMemory::blockSize &&
      alignof(Closure) <= alignof(WorkItem);

  static void operate(WorkItem& item, Operation operation) {
    auto& self = static_cast<ClosureItem&>(item);
    if (operation == Operation::dispose) {
      delete &self;
      return;
    }
    if (operation == Operation::run) self.closure_();
    self.closure_.~Closure();
  }

  // A union, because the closure is destroyed before the item, as soon as it has run.
  union {
    Closure closure_;
  };
};

template <class Closure>
WorkItem* newWorkItem(Closure&& closure) {
  return new ClosureItem<std::decay_t<Closure>>(std::forward<Closure>(closure));
}

}  // namespace zeb::detail
