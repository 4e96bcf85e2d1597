#pragma once

#include <ZEBPlatform/Foundation/ValueStorage.h>
#include <ZEBPlatform/Foundation/detail/StringHash.h>

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

namespace zeb::detail {

/// The keys that a document has contained so far, so that each distinct key is stored once.
///
/// Only an optimisation: a key that is not found, for any reason, is stored again.
class KeyTable {
 public:
  struct Entry {
    std::uint64_t start;  ///< the first eight bytes, padded with zeros
    std::size_t length;
    const char* bytes;      ///< UTF-8, without escapes; outlives the document's parsing
    StringStorage* string;  ///< null until the caller sets it
    std::uint32_t hash;
    std::uint32_t follower;  ///< position of the key that came after this one the last time
  };

  /// Forgets all keys.
  void startDocument() {
    entries_.clear();
    entries_.push_back({0, noLength, nullptr, nullptr, 0, 0});
    latest_ = 0;
    if (slots_.empty()) slots_.resize(minSlots);
    if (++round_ == 0) {
      std::fill(slots_.begin(), slots_.end(), Slot{});
      round_ = 1;
    }
  }

  std::size_t reservedBytes() const noexcept {
    return entries_.capacity() * sizeof(Entry) + slots_.capacity() * sizeof(Slot);
  }
  /// Frees the memory, and with it all keys, if it is larger than `bytes`.
  void discardIfLargerThan(std::size_t bytes) noexcept {
    if (reservedBytes() <= bytes) return;
    std::vector<Entry>().swap(entries_);
    std::vector<Slot>().swap(slots_);
  }

  /// The entry of this key if it followed the previous key the last time, which is usual because
  /// dictionaries of one kind have the same keys in the same order; else null.
  const Entry* findFollower(std::string_view key, std::uint64_t start) noexcept {
    const std::uint32_t position = entries_[latest_].follower;
    const Entry& entry = entries_[position];
    if (!isEntryOf(entry, key, start)) return nullptr;
    latest_ = position;
    return &entry;
  }

  /// The entry of this key, or a new one for it (whose `string` is null), or null when the search
  /// would take too long. It is valid until the next call.
  Entry* find(std::string_view key, std::uint64_t start, std::uint32_t hash) {
    if (entries_.size() * 2 >= slots_.size()) grow();
    const std::size_t mask = slots_.size() - 1;
    std::size_t place = hash & mask;
    for (int probes = 0; probes < maxProbes; ++probes) {
      Slot& slot = slots_[place];
      if (slot.round != round_) {
        slot = {hash, round_, static_cast<std::uint32_t>(entries_.size())};
        entries_.push_back({start, key.size(), key.data(), nullptr, hash, 0});
        return follow(slot.position);
      }
      if (slot.hash == hash && isEntryOf(entries_[slot.position], key, start)) {
        return follow(slot.position);
      }
      place = (place + 1) & mask;
    }
    return nullptr;
  }

 private:
  struct Slot {
    std::uint32_t hash;
    std::uint32_t round;  ///< number of the document that the slot was filled for
    std::uint32_t position;
  };

  static constexpr std::size_t minSlots = 256;
  static constexpr int maxProbes = 32;
  static constexpr std::size_t noLength = SIZE_MAX;

  static bool isEntryOf(const Entry& entry, std::string_view key, std::uint64_t start) noexcept {
    return entry.start == start && entry.length == key.size() &&
           (key.size() <= sizeof start || equalBytes(entry.bytes, key.data(), key.size()));
  }

  Entry* follow(std::uint32_t position) noexcept {
    entries_[latest_].follower = position;
    latest_ = position;
    return &entries_[position];
  }

  void grow() {
    std::vector<Slot> old(slots_.size() * 2);
    old.swap(slots_);
    const std::size_t mask = slots_.size() - 1;
    for (const Slot& slot : old) {
      if (slot.round != round_) continue;
      std::size_t place = slot.hash & mask;
      while (slots_[place].round == round_) place = (place + 1) & mask;
      slots_[place] = slot;
    }
  }

  std::vector<Entry> entries_;  ///< in the order of their first use, after one that is no key
  std::vector<Slot> slots_;     ///< a hash index of the entries
  std::uint32_t round_ = 0;
  std::uint32_t latest_ = 0;  ///< position of the previous key
};

}  // namespace zeb::detail
