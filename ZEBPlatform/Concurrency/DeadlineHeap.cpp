#include <ZEBPlatform/Concurrency/detail/DeadlineHeap.h>

#include <algorithm>
#include <utility>

namespace zeb::detail {

namespace {

/// Four children a node: half the levels of a binary heap, and siblings share a cache line.
constexpr std::size_t arity = 4;

}  // namespace

void DeadlineHeap::place(std::size_t index, Entry entry) noexcept {
  entries_[index] = entry;
  if (entry.node) entry.node->index_ = index;
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
  entries_[std::exchange(node.index_, DeadlineNode::absent)].node = nullptr;
  ++gaps_;
  if (gaps_ > 64 && gaps_ > entries_.size() / 4 * 3) removeGaps();
}

void DeadlineHeap::removeGaps() noexcept {
  std::erase_if(entries_, [](const Entry& entry) { return !entry.node; });
  gaps_ = 0;
  for (std::size_t index = entries_.size(); index-- > 0;) siftDown(index, entries_[index]);
}

DeadlineNode* DeadlineHeap::takeDue(std::uint64_t now) noexcept {
  while (!entries_.empty()) {
    const Entry first = entries_.front();
    if ((first.node ? first.node->deadline : first.latest) > now) return nullptr;
    const Entry last = entries_.back();
    entries_.pop_back();
    if (!entries_.empty()) siftDown(0, last);
    if (first.node) {
      first.node->index_ = DeadlineNode::absent;
      return first.node;
    }
    --gaps_;
  }
  return nullptr;
}

}  // namespace zeb::detail
