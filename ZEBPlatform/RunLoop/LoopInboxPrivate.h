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
/// The newest item and what the loop's thread is up to stand in one word, so that one atomic operation
/// both posts an item and tells whether the thread has to be woken: no wake-up is lost, and none is sent to a
/// thread that is awake. It has a cache line to itself, for the loop's thread writes to its neighbours all the
/// time.
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

  /// Keeps the loop's thread from sleeping before it has looked around once more. Any thread.
  Outcome requestPass() noexcept {
    Word word = word_.load(std::memory_order_relaxed);
    do {
      if (word & closedFlag) return Outcome::closed;
    } while (!exchange(word, (word & ~sleepFlag) | passFlag));
    return outcomeOf(word);
  }

  // What follows is for the loop's thread.

  /// Whether something has come since the last look around.
  bool hasNews() const noexcept { return word_.load(std::memory_order_relaxed) != 0; }

  bool hasItems() const noexcept {
    return itemOf(word_.load(std::memory_order_relaxed)) != nullptr;
  }

  /// The items that have come, oldest first. Counts as a look around.
  ItemList takeAll() noexcept {
    if (word_.load(std::memory_order_relaxed) == 0) return {};
    return reversed(itemOf(word_.exchange(0, std::memory_order_acq_rel)));
  }

  /// From now on somebody who brings something must wake the thread. False if something has come.
  bool tryToSleep() noexcept {
    Word expected = 0;
    return word_.compare_exchange_strong(expected, sleepFlag, std::memory_order_acq_rel) ||
           expected == sleepFlag;
  }

  /// Takes no more items; answers those that came before.
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
