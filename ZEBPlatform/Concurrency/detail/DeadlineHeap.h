#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zeb::detail {

/// A base of objects that a `DeadlineHeap` orders. A node is in one heap at a time and must be removed
/// before it is destroyed.
class DeadlineNode {
 public:
  /// When the node becomes due, in ticks of `mach_absolute_time()`.
  std::uint64_t deadline = 0;
  /// How many ticks it may wait beyond the deadline, to share another node's wake-up.
  std::uint64_t leeway = 0;

  bool isInHeap() const noexcept { return index_ != absent; }

 private:
  friend class DeadlineHeap;
  static constexpr std::size_t absent = SIZE_MAX;

  /// The latest moment to wake up for it.
  std::uint64_t latest() const noexcept {
    return leeway < UINT64_MAX - deadline ? deadline + leeway : UINT64_MAX;
  }

  std::size_t index_ = absent;
};

/// Timers by their deadlines. Reading the next wake-up takes constant time, adding or moving a node
/// logarithmic time, removing one constant time on average. It owns no node and has no lock: the caller
/// guards it.
class DeadlineHeap {
 public:
  bool isEmpty() const noexcept { return entries_.size() == gaps_; }

  /// When to wake up, or `UINT64_MAX`. After the first node was removed, once earlier than necessary.
  std::uint64_t nextWakeUp() const noexcept {
    return entries_.empty() ? UINT64_MAX : entries_.front().latest;
  }

  /// Adds a node, or moves a node whose deadline has changed.
  void put(DeadlineNode& node);
  /// Removes the node if it is in the heap.
  void remove(DeadlineNode& node) noexcept;
  /// Removes and answers the first node if it is due at `now`; else answers null.
  DeadlineNode* takeDue(std::uint64_t now) noexcept;

 private:
  /// The moment lies beside the node's address, so that sifting reads no node. The entry of a removed
  /// node stays without a node, until it comes to the front or there are too many such gaps.
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
