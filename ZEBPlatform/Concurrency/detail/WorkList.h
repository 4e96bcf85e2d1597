#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/WorkItem.h>

#include <atomic>

namespace zeb::detail {

/// A first-in-first-out list of work items that are linked through themselves, for any number of
/// producers, which take no lock, and of consumers, which take turns under one. Unbounded. It owns
/// nothing: items that are left when it ends are lost.
///
/// What a thread did before push() is visible to the thread whose pop() answers the item. push() and
/// isEmpty() are sequentially consistent, so a producer that appends and then tests whether a consumer
/// looks, and a consumer that stops looking and then tests isEmpty(), can't miss each other.
class WorkList {
 public:
  /// Appends with one exchange.
  void push(WorkItem& item) noexcept;
  /// The first item, or null when the list is empty or its only item is just being appended.
  WorkItem* pop() noexcept ZEB_EXCLUDES(consumers_);

  /// An item that is just being appended counts.
  bool isEmpty() const noexcept {
    return tail_.load(std::memory_order_seq_cst) == &stub_ &&
           head_.load(std::memory_order_relaxed) == &stub_;
  }

 private:
  /// Stands in the list when it is empty, so that there is always an item to append to.
  class Stub final : public WorkItem {
   public:
    Stub() noexcept : WorkItem(nullptr) {}
  };

  WorkItem* popLocked() noexcept ZEB_REQUIRES(consumers_);

  alignas(64) std::atomic<WorkItem*> tail_{&stub_};
  alignas(64) Lock consumers_;
  std::atomic<WorkItem*> head_{&stub_};  ///< changed with `consumers_` held
  Stub stub_;
};

}  // namespace zeb::detail
