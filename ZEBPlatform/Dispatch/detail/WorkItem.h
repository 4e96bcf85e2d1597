#pragma once

#include <ZEBPlatform/Dispatch/detail/WorkItemMemory.h>

#include <atomic>
#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

namespace zeb::detail {

class WorkItem;

/// Runs items in its own way, such as a concurrent queue, which counts them, or a queue's turn.
class WorkRunner {
 public:
  /// Runs and disposes of the item.
  virtual void runItem(WorkItem& item) = 0;

 protected:
  ~WorkRunner() = default;
};

/// One piece of work on its way through a queue: a closure of any type, to be run once on some thread.
/// Exactly one of `run()` and `discard()` is called, then `dispose()`.
class WorkItem {
 public:
  enum class Operation { run, discard, dispose };
  using Operate = void (*)(WorkItem& item, Operation operation);

  explicit WorkItem(Operate operate) noexcept : operate_(operate) {}
  WorkItem(const WorkItem&) = delete;
  WorkItem& operator=(const WorkItem&) = delete;

  /// Calls the closure and destroys it. The item itself stays, for it may be a link of a list.
  ///
  /// A closure that throws ends the process. From here down to where a thread of the pool begins, nothing catches and
  /// nothing is `noexcept`: so the process stops where the exception was thrown, and its message and
  /// the throwing stack are there to be seen. Who runs items on another thread must not let it pass.
  void run() { operate_(*this, Operation::run); }
  /// Destroys the closure without a call.
  void discard() noexcept { operate_(*this, Operation::discard); }
  /// Gives the item's memory back.
  void dispose() noexcept { operate_(*this, Operation::dispose); }

  bool isOperatedBy(Operate operate) const noexcept { return operate_ == operate; }

  /// The list or the queue that holds the item uses these.
  std::atomic<WorkItem*> next{nullptr};
  WorkRunner* runner = nullptr;

 protected:
  ~WorkItem() = default;

 private:
  Operate operate_;
};

/// A work item with its closure inside, so that posting costs one allocation. A closure that throws
/// ends the process, as a thread's function would: nobody is there to catch it.
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

  // The closure dies before the item, as soon as it has run.
  union {
    Closure closure_;
  };
};

template <class Closure>
WorkItem* newWorkItem(Closure&& closure) {
  return new ClosureItem<std::decay_t<Closure>>(std::forward<Closure>(closure));
}

}  // namespace zeb::detail
