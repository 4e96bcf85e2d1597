#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zeb::detail {

/// Base of the objects that a `DeadlineHeap` orders. A node is in at most one heap and must be
/// removed before it is destroyed. After a change of its members while it is in a heap, call put()
/// again.
class DeadlineNode {
 public:
  /// When the node becomes due, in ticks of `mach_absolute_time()`.
  std::uint64_t deadline = 0;
  /// Ticks that it may wait beyond the deadline at most, to share another node's wake-up.
  std::uint64_t leeway = 0;

  bool isInHeap() const noexcept { return index_ != absent; }

 private:
  friend class DeadlineHeap;
  static constexpr std::size_t absent = SIZE_MAX;

  /// The latest moment at which the thread must wake up for this node.
  std::uint64_t latest() const noexcept {
    return leeway < UINT64_MAX - deadline ? deadline + leeway : UINT64_MAX;
  }

  std::size_t index_ = absent;
};

/// Timers ordered by the latest moment at which they may fire.
///
/// Threads: it has no lock and orders no memory; the caller guards it and its nodes with one lock.
/// Lifetime: it owns no node. The nodes must outlive it or be removed first.
/// Cost: reading the next wake-up takes constant time, adding or moving a node logarithmic time,
/// removing a node constant time on average. Size: 16 bytes for each node and for each gap of a
/// removed node; at most three quarters of the entries, or 64 of them, are gaps.
/// Nodes of equal deadlines come in any order: do not use it as a queue.
class DeadlineHeap {
 public:
  bool isEmpty() const noexcept { return entries_.size() == gaps_; }

  /// When to wake up, or `UINT64_MAX`. After the first node was removed this may still be its
  /// moment, so that one wake-up finds nothing due.
  std::uint64_t nextWakeUp() const noexcept {
    return entries_.empty() ? UINT64_MAX : entries_.front().latest;
  }

  /// Adds a node, or moves a node whose deadline has changed.
  void put(DeadlineNode& node);
  /// Removes the node if it is in the heap.
  void remove(DeadlineNode& node) noexcept;
  /// Removes and answers the first node if its deadline is not after `now`; otherwise answers null.
  DeadlineNode* takeDue(std::uint64_t now) noexcept;

 private:
  /// The moment lies beside the node's address, so that sifting reads no node. A removed node
  /// leaves its entry as a gap, with a null node, until the gap comes to the front or there are too
  /// many gaps.
  struct Entry {
    std::uint64_t latest;
    DeadlineNode* node;
  };

  void place(std::size_t index, Entry entry) noexcept;
  void siftUp(std::size_t index, Entry entry) noexcept;
  void siftDown(std::size_t index, Entry entry) noexcept;

  void removeGaps() noexcept;

  std::vector<Entry> entries_;
  std::size_t gaps_ = 0;
};

}  // namespace zeb::detail
