#pragma once

#include <ZEBPlatform/Dispatch/detail/WorkItem.h>

#include <atomic>
#include <mutex>

namespace zeb::detail {

/// A first-in-first-out list of work items, linked through themselves: any number of producers, who take
/// no lock, and of consumers, who take turns. Unbounded.
class WorkList {
 public:
  /// Appends with one exchange.
  void push(WorkItem& item) noexcept;
  /// The first item, or null when there is none or the only one is just being appended.
  WorkItem* pop() noexcept;

  /// An item that is just being appended counts.
  bool isEmpty() const noexcept {
    return back_.load(std::memory_order_seq_cst) == &stub_ &&
           front_.load(std::memory_order_relaxed) == &stub_;
  }

 private:
  /// Stands in the list when it is empty, so that it always has a back to append to.
  class Stub final : public WorkItem {
   public:
    Stub() noexcept : WorkItem(nullptr) {}
  };

  WorkItem* popLocked() noexcept;

  alignas(64) std::atomic<WorkItem*> back_{&stub_};
  alignas(64) std::mutex consumers_;
  std::atomic<WorkItem*> front_{&stub_};  ///< the consumers'
  Stub stub_;
};

}  // namespace zeb::detail
