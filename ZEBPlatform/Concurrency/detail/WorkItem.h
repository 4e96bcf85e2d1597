#pragma once

#include <ZEBPlatform/Concurrency/detail/WorkItemMemory.h>

#include <atomic>
#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>

namespace zeb::detail {

class WorkItem;

/// Runs items in a way of its own. A concurrent queue counts its items, for example.
class WorkRunner {
 public:
  /// Runs and disposes of the item.
  virtual void runItem(WorkItem& item) = 0;

 protected:
  ~WorkRunner() = default;
};

/// A closure of any type on its way through a queue, to be run once on some thread. The queue that holds
/// the item owns it: it calls exactly one of `run()` and `discard()`, then `dispose()`.
class WorkItem {
 public:
  enum class Operation { run, discard, dispose };
  using Operate = void (*)(WorkItem& item, Operation operation);

  explicit WorkItem(Operate operate) noexcept : operate_(operate) {}
  WorkItem(const WorkItem&) = delete;
  WorkItem& operator=(const WorkItem&) = delete;

  /// Calls the closure and destroys it. The item itself stays, because it may be a link of a list.
  ///
  /// A closure that throws ends the process. Between here and the first function of a pool thread,
  /// nothing catches and nothing is `noexcept`, so the process stops where the exception was thrown and
  /// a debugger shows the throwing stack. Code that runs items on other threads must not let the
  /// exception pass.
  void run() { operate_(*this, Operation::run); }
  /// Destroys the closure without calling it.
  void discard() noexcept { operate_(*this, Operation::discard); }
  /// Frees the item's memory.
  void dispose() noexcept { operate_(*this, Operation::dispose); }

  bool isOperatedBy(Operate operate) const noexcept { return operate_ == operate; }

  /// For the list or the queue that holds the item.
  std::atomic<WorkItem*> next{nullptr};
  WorkRunner* runner = nullptr;

 protected:
  ~WorkItem() = default;

 private:
  Operate operate_;
};

/// A work item with its closure inside, so that posting costs one allocation.
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
