#pragma once

#include <atomic>
#include <type_traits>
#include <utility>

namespace zeb::detail {

/// One piece of work on its way through a queue, linked to the next one. Frees itself when it is done.
class WorkItem {
 public:
  WorkItem(const WorkItem&) = delete;
  WorkItem& operator=(const WorkItem&) = delete;

  /// Calls the closure and destroys it; the item itself stays, as a link.
  void run() noexcept { operate_(*this, Operation::run); }
  /// Frees the item.
  void dispose() noexcept { operate_(*this, Operation::dispose); }

  std::atomic<WorkItem*> next{nullptr};

 protected:
  enum class Operation { run, dispose };
  using Operate = void (*)(WorkItem& item, Operation operation) noexcept;

  explicit WorkItem(Operate operate) noexcept : operate_(operate) {}
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
  explicit ClosureItem(Source&& source) : WorkItem(&operate) {
    new (&closure_) Closure(std::forward<Source>(source));
  }

 private:
  static void operate(WorkItem& item, Operation operation) noexcept {
    auto& self = static_cast<ClosureItem&>(item);
    if (operation == Operation::dispose) {
      delete &self;
      return;
    }
    self.closure_();
    self.closure_.~Closure();
  }

  // The closure dies when it has run, before the item.
  union {
    Closure closure_;
  };

 public:
  ~ClosureItem() {}
};

template <class Closure>
WorkItem* newWorkItem(Closure&& closure) {
  return new ClosureItem<std::decay_t<Closure>>(std::forward<Closure>(closure));
}

}  // namespace zeb::detail
