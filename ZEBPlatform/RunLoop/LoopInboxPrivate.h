#pragma once

#include <ZEBPlatform/Concurrency/detail/WorkItem.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace zeb::detail {

/// Items that are linked from the first to the last one.
struct ItemList {
  WorkItem* first = nullptr;
  WorkItem* last = nullptr;
  std::size_t count = 0;
};

/// Work items from any thread on their way to a run loop.
///
/// The newest item and the state of the loop's thread are in one word, so that one atomic operation
/// posts an item and shows whether the thread has to be woken: no wake-up is lost, and none is sent
/// to a thread that is awake. What a thread did before `push` is visible to the loop's thread after
/// `takeAll`. The word has a cache line of its own, because the loop's thread writes to its
/// neighbours all the time.
class alignas(64) LoopInbox {
 public:
  enum class Outcome {
    done,
    mustWake,  ///< and the caller must wake the loop's thread
    closed,    ///< not done: the loop has ended
  };

  /// Any thread.
  Outcome push(WorkItem& item) noexcept {
    Word word = word_.load(std::memory_order_relaxed);
    Word changed;
    do {
      if (word & closedFlag) return Outcome::closed;
      item.next.store(itemOf(word), std::memory_order_relaxed);
      changed = reinterpret_cast<Word>(&item) | (word & passFlag);
    } while (!exchange(word, changed));
    return outcomeOf(word);
  }

  /// Makes the loop do one more pass before its thread sleeps. Any thread.
  Outcome requestPass() noexcept {
    Word word = word_.load(std::memory_order_relaxed);
    do {
      if (word & closedFlag) return Outcome::closed;
    } while (!exchange(word, (word & ~sleepFlag) | passFlag));
    return outcomeOf(word);
  }

  // What follows is for the loop's thread.

  /// Whether an item or a request has arrived since the last `takeAll`.
  bool hasNews() const noexcept { return word_.load(std::memory_order_relaxed) != 0; }

  bool hasItems() const noexcept {
    return itemOf(word_.load(std::memory_order_relaxed)) != nullptr;
  }

  /// Takes the items that have arrived, oldest first, and all requests for a pass.
  ItemList takeAll() noexcept {
    if (word_.load(std::memory_order_relaxed) == 0) return {};
    return reversed(itemOf(word_.exchange(0, std::memory_order_acq_rel)));
  }

  /// After this returns true, a thread that posts or requests must wake the loop's thread. False if
  /// anything has arrived.
  bool tryToSleep() noexcept {
    Word expected = 0;
    return word_.compare_exchange_strong(expected, sleepFlag, std::memory_order_acq_rel) ||
           expected == sleepFlag;
  }

  /// Refuses further items and returns those that arrived before.
  ItemList close() noexcept {
    return reversed(itemOf(word_.exchange(closedFlag, std::memory_order_acq_rel)));
  }

 private:
  using Word = std::uintptr_t;
  static constexpr Word sleepFlag = 1;
  static constexpr Word passFlag = 2;
  static constexpr Word closedFlag = 4;
  static constexpr Word flags = 7;
  static_assert(alignof(WorkItem) > flags);

  static WorkItem* itemOf(Word word) noexcept { return reinterpret_cast<WorkItem*>(word & ~flags); }

  static Outcome outcomeOf(Word word) noexcept {
    return word & sleepFlag ? Outcome::mustWake : Outcome::done;
  }

  bool exchange(Word& expected, Word changed) noexcept {
    return word_.compare_exchange_weak(expected, changed, std::memory_order_acq_rel,
                                       std::memory_order_relaxed);
  }

  static ItemList reversed(WorkItem* newest) noexcept {
    ItemList list{.last = newest};
    while (newest) {
      WorkItem* const older = newest->next.load(std::memory_order_relaxed);
      newest->next.store(list.first, std::memory_order_relaxed);
      list.first = newest;
      ++list.count;
      newest = older;
    }
    return list;
  }

  std::atomic<Word> word_{0};
};

}  // namespace zeb::detail
