#pragma once

#include <ZEBPlatform/Memory/NSObject.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <span>
#include <utility>

namespace zeb::detail {

/// Base of the entries of observer lists: one addition of one observer. Derived classes hold the
/// observer weakly, and what to call it with.
class ObserverEntry : public NSObject {
 public:
  /// Whether the entry was removed from its list. It may be removed right afterwards. Any thread.
  bool isRemoved() const noexcept { return isRemoved_.load(std::memory_order_acquire); }

 private:
  template <class>
  friend class ObserverArray;
  template <class>
  friend class ObserverIndex;

  std::atomic<bool> isRemoved_{false};
  /// For `ObserverIndex`.
  const void* owner_ = nullptr;
  ObserverEntry* older_ = nullptr;
  ObserverEntry* newer_ = nullptr;
};

/// The storage of an observer list: entries in the order of their adding. It grows in place up to
/// its capacity, and removed entries stay in it as gaps, so that readers need no lock: a reader
/// that holds the array iterates over the entries that it found at the beginning, whatever happens
/// meanwhile. One thread at a time may append and remove. What a thread did before `append()` is
/// visible to readers that find the entry.
template <class Entry>
class ObserverArray : public NSObject {
 public:
  ObserverArray() : capacity_(1), slots_(std::make_unique<Ref<Entry>[]>(capacity_)) {}
  /// A copy without the gaps, and with room for as many entries again and one more: additions and
  /// removals take constant time on average.
  explicit ObserverArray(const ObserverArray& before)
      : capacity_(2 * before.activeCount() + 1), slots_(std::make_unique<Ref<Entry>[]>(capacity_)) {
    for (const Ref<Entry>& entry : before.entries()) {
      if (!entry->isRemoved()) append(entry);
    }
  }

  /// All entries, gaps included. Any thread.
  std::span<const Ref<Entry>> entries() const noexcept {
    return {slots_.get(), count_.load(std::memory_order_acquire)};
  }

  /// The number of entries, gaps included, that it has memory for.
  std::size_t capacity() const noexcept { return capacity_; }
  bool isFull() const noexcept { return count_.load(std::memory_order_relaxed) == capacity_; }
  void append(Ref<Entry> entry) noexcept {
    const std::size_t count = count_.load(std::memory_order_relaxed);
    slots_[count] = std::move(entry);
    count_.store(count + 1, std::memory_order_release);
  }
  /// Turns the entry into a gap.
  void remove(Entry& entry) noexcept {
    entry.isRemoved_.store(true, std::memory_order_release);
    ++gaps_;
  }
  bool hasGaps() const noexcept { return gaps_ > 0; }
  /// Whether at least half of the array are gaps, so that a copy should replace it.
  bool isSparse() const noexcept { return 2 * gaps_ >= entries().size(); }
  std::size_t activeCount() const noexcept { return entries().size() - gaps_; }

 private:
  const std::size_t capacity_;
  const std::unique_ptr<Ref<Entry>[]> slots_;
  std::atomic<std::size_t> count_{0};
  std::size_t gaps_ = 0;
};

/// The observers of one thing. It has no lock: its owner guards it, by a lock or a serial queue.
/// Only snapshots may be read without that, on any thread.
///
/// Releasing an entry may run a user's destructor. Therefore, changes answer the storage that they
/// replace, for the caller to release after unlocking. A removed entry lives until its storage is
/// replaced; if it owns
/// more than weak references, the code that removes it takes these out.
///
/// Cost: adding and removing take constant time on average, a snapshot two atomic operations. An
/// entry takes one reference, and one more that stands by for the next entry.
template <class Entry>
class ObserverList {
 public:
  using Array = ObserverArray<Entry>;

  /// The entries of one moment in the order of their adding, entries that are or become removed
  /// included: a user that skips those asks each entry for `isRemoved()`. Iteration survives every
  /// change of the list. Whether an observer has died shows when its weak reference is locked.
  class Snapshot {
   public:
    Snapshot() = default;
    explicit Snapshot(const Ref<Array>& array) : array_(array) {
      if (array_) entries_ = array_->entries();
    }
    auto begin() const noexcept { return entries_.begin(); }
    auto end() const noexcept { return entries_.end(); }

   private:
    Ref<Array> array_;
    std::span<const Ref<Entry>> entries_;
  };

  /// Whether no entry is left but removed ones.
  bool isEmpty() const noexcept { return !array_; }
  std::size_t size() const noexcept { return array_ ? array_->activeCount() : 0; }

  Snapshot snapshot() const noexcept { return Snapshot(array_); }

  [[nodiscard]] Ref<Array> add(Ref<Entry> entry) {
    Ref<Array> replaced;
    if (!array_ || array_->isFull()) {
      replaced = std::exchange(array_, array_ ? makeRef<Array>(*array_) : makeRef<Array>());
    }
    array_->append(std::move(entry));
    return replaced;
  }
  /// The entry must be in this list and not removed yet.
  [[nodiscard]] Ref<Array> remove(Entry& entry) {
    array_->remove(entry);
    return array_->isSparse() ? closeGaps() : nullptr;
  }
  /// Makes the next snapshots free of entries that were removed before. Linear time if there are
  /// any.
  [[nodiscard]] Ref<Array> closeGaps() {
    if (!array_ || !array_->hasGaps()) return nullptr;
    return std::exchange(array_, array_->activeCount() > 0 ? makeRef<Array>(*array_) : nullptr);
  }

 private:
  Ref<Array> array_;
};

}  // namespace zeb::detail
