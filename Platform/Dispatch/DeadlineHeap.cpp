#include <Dispatch/DeadlineHeap.h>

#include <algorithm>

namespace zeb::detail {

namespace {

/// Four children a node: half the levels of a binary heap, and siblings share a cache line.
constexpr std::size_t arity = 4;

}  // namespace

void DeadlineHeap::place(std::size_t index, Entry entry) noexcept {
  entries_[index] = entry;
  entry.node->index_ = index;
}

void DeadlineHeap::siftUp(std::size_t index, Entry entry) noexcept {
  while (index > 0) {
    const std::size_t parent = (index - 1) / arity;
    if (entries_[parent].latest <= entry.latest) break;
    place(index, entries_[parent]);
    index = parent;
  }
  place(index, entry);
}

void DeadlineHeap::siftDown(std::size_t index, Entry entry) noexcept {
  for (;;) {
    const std::size_t firstChild = index * arity + 1;
    if (firstChild >= entries_.size()) break;
    const std::size_t end = std::min(firstChild + arity, entries_.size());
    std::size_t least = firstChild;
    for (std::size_t child = firstChild + 1; child < end; ++child) {
      if (entries_[child].latest < entries_[least].latest) least = child;
    }
    if (entry.latest <= entries_[least].latest) break;
    place(index, entries_[least]);
    index = least;
  }
  place(index, entry);
}

void DeadlineHeap::put(DeadlineNode& node) {
  const Entry entry{node.latest(), &node};
  if (!node.isInHeap()) {
    entries_.push_back(entry);
    siftUp(entries_.size() - 1, entry);
    return;
  }
  const std::size_t index = node.index_;
  if (entry.latest < entries_[index].latest) {
    siftUp(index, entry);
  } else {
    siftDown(index, entry);
  }
}

void DeadlineHeap::remove(DeadlineNode& node) noexcept {
  if (!node.isInHeap()) return;
  const std::size_t index = node.index_;
  node.index_ = DeadlineNode::absent;
  const Entry last = entries_.back();
  const std::uint64_t removed = entries_[index].latest;
  entries_.pop_back();
  if (index == entries_.size()) return;
  if (last.latest < removed) {
    siftUp(index, last);
  } else {
    siftDown(index, last);
  }
}

DeadlineNode* DeadlineHeap::takeDue(std::uint64_t now) noexcept {
  if (entries_.empty()) return nullptr;
  DeadlineNode& first = *entries_.front().node;
  if (first.deadline > now) return nullptr;
  remove(first);
  return &first;
}

}  // namespace zeb::detail
