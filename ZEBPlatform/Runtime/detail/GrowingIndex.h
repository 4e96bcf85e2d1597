#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

namespace zeb::detail {

/// Records by hash: found without a lock, even while one is being added; additions take turns, by
/// the caller's lock. Records are never taken out. A `Record` has a member `hash`.
template <class Record>
class GrowingIndex {
 public:
  GrowingIndex() = default;
  GrowingIndex(const GrowingIndex&) = delete;
  GrowingIndex& operator=(const GrowingIndex&) = delete;

  /// The record of this hash that `matches` recognises, or null.
  template <class Matches>
  Record* find(std::size_t hash, const Matches& matches) const noexcept {
    const Table* table = current_.load(std::memory_order_acquire);
    if (!table) return nullptr;
    for (std::size_t position = hash;; ++position) {
      Record* record = table->places[position & table->mask].load(std::memory_order_acquire);
      if (!record || (record->hash == hash && matches(*record))) return record;
    }
  }

  Record& add(std::unique_ptr<Record> record) {
    Record& added = *record;
    records_.push_back(std::move(record));
    Table* table = current_.load(std::memory_order_relaxed);
    if (table && 2 * records_.size() <= table->mask) {
      table->put(added);
      return added;
    }
    // Readers may still be in the old table, so that it stays: together they are no larger than the
    // last.
    auto larger = std::make_unique<Table>(table ? 2 * (table->mask + 1) : 8);
    for (const std::unique_ptr<Record>& each : records_) larger->put(*each);
    current_.store(larger.get(), std::memory_order_release);
    tables_.push_back(std::move(larger));
    return added;
  }

 private:
  struct Table {
    explicit Table(std::size_t size) : mask(size - 1), places(new std::atomic<Record*>[size]()) {}
    void put(Record& record) noexcept {
      std::size_t position = record.hash;
      while (places[position & mask].load(std::memory_order_relaxed)) ++position;
      places[position & mask].store(&record, std::memory_order_release);
    }
    const std::size_t mask;
    const std::unique_ptr<std::atomic<Record*>[]> places;
  };

  std::atomic<Table*> current_{nullptr};
  std::vector<std::unique_ptr<Table>> tables_;
  std::vector<std::unique_ptr<Record>> records_;
};

}  // namespace zeb::detail
