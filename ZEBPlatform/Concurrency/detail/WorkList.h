#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/WorkItem.h>

#include <atomic>

namespace zeb::detail {

/// A first-in-first-out list of work items, linked through the items themselves. Any number of
/// producers append without a lock; any number of consumers take turns under one.
///
/// Memory ordering: what a thread did before push() is visible to the thread whose pop() answers
/// the item. push() and isEmpty() are sequentially consistent: if a producer appends and then tests
/// whether a consumer is looking for work, and a consumer stops looking and then calls isEmpty(),
/// at least one of the two notices the other.
/// Lifetime: it owns no item, and items that are left when it ends are lost. A consumer may destroy
/// an item as soon as pop() has answered it, even if its push() has not returned yet.
/// Size: 128 bytes, so that producers and consumers do not share a cache line; no limit of items.
/// Cost: push() is one atomic exchange and never waits; pop() takes the lock unless the list is
/// empty.
/// Fairness: items leave in the order of the exchanges of their push() calls. Consumers have no
/// order.
/// Do not rely on pop() to find an item that was pushed before; see there.
class WorkList {
 public:
  /// Appends the item. Any thread.
  void push(WorkItem& item) noexcept;
  /// Removes and answers the first item, or answers null if the list is empty. Also answers null
  /// while another thread is about to link the item behind the first one; isEmpty() is false then,
  /// so a consumer that gives up must test it and have the list visited again.
  WorkItem* pop() noexcept ZEB_EXCLUDES(consumers_);

  /// Whether there is no item. An item counts from the exchange of its push() on, which is before
  /// pop() can answer it.
  bool isEmpty() const noexcept {
    return tail_.load(std::memory_order_seq_cst) == &stub_ &&
           head_.load(std::memory_order_relaxed) == &stub_;
  }

 private:
  /// Is in the list when it has no other item, so that producers always have an item to append to.
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
