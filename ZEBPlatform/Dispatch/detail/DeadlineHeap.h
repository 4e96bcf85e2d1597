#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zeb::detail {

/// What stands in a `DeadlineHeap`. In one heap at a time.
class DeadlineNode {
 public:
  /// Due from here on; in ticks of `mach_absolute_time()`.
  std::uint64_t deadline = 0;
  /// It may wait for so much longer, to share somebody else's wake-up.
  std::uint64_t leeway = 0;

  bool isInHeap() const noexcept { return index_ != absent; }

 private:
  friend class DeadlineHeap;
  static constexpr std::size_t absent = SIZE_MAX;

  /// When it must be woken for.
  std::uint64_t latest() const noexcept {
    return leeway < UINT64_MAX - deadline ? deadline + leeway : UINT64_MAX;
  }

  std::size_t index_ = absent;
};

/// Timers by their deadlines: the next one at once, any one added or moved in logarithmic time, removed in
/// constant time on the average. Owns nothing and locks nothing.
class DeadlineHeap {
 public:
  bool isEmpty() const noexcept { return entries_.size() == gaps_; }

  /// The moment to wake up at, or `UINT64_MAX`. Too early, once, if the first node was removed meanwhile.
  std::uint64_t nextWakeUp() const noexcept {
    return entries_.empty() ? UINT64_MAX : entries_.front().latest;
  }

  /// Adds a node, or moves one whose deadline has changed.
  void put(DeadlineNode& node);
  /// Removes a node; nothing if it is not in.
  void remove(DeadlineNode& node) noexcept;
  /// Removes and answers the first node if it is due at `now`, else null.
  DeadlineNode* takeDue(std::uint64_t now) noexcept;

 private:
  /// The moment stands beside the node, so that sifting reads no node. A removed node leaves its entry behind
  /// without a node, until the entry comes to the front or the gaps are too many.
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
