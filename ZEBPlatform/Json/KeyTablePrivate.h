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
    std::uint32_t hash;
    std::uint32_t round;  ///< number of the document that the entry belongs to
    std::uint64_t start;  ///< the first eight bytes, padded with zeros
    const char* bytes;    ///< UTF-8, without escapes; outlives the document's parsing
    std::size_t length;
    StringStorage* string;
  };

  /// Forgets all keys.
  void startDocument() {
    used_ = 0;
    if (entries_.empty()) entries_.resize(minEntries);
    if (++round_ == 0) {
      std::fill(entries_.begin(), entries_.end(), Entry{});
      round_ = 1;
    }
  }

  std::size_t reservedBytes() const noexcept { return entries_.capacity() * sizeof(Entry); }
  /// Frees the memory, and with it all keys, if it is larger than `bytes`.
  void discardIfLargerThan(std::size_t bytes) noexcept {
    if (reservedBytes() > bytes) std::vector<Entry>().swap(entries_);
  }

  /// The entry of this key, or a new one for it (whose `string` is null), or null when the search
  /// would take too long.
  Entry* find(std::string_view key, std::uint64_t start, std::uint32_t hash) {
    if (used_ * 2 >= entries_.size()) grow();
    const std::size_t mask = entries_.size() - 1;
    std::size_t slot = hash & mask;
    for (int probes = 0; probes < maxProbes; ++probes) {
      Entry& entry = entries_[slot];
      if (entry.round != round_) {
        ++used_;
        entry = {hash, round_, start, key.data(), key.size(), nullptr};
        return &entry;
      }
      if (entry.hash == hash && entry.start == start && entry.length == key.size() &&
          equalBytes(entry.bytes, key.data(), key.size())) {
        return &entry;
      }
      slot = (slot + 1) & mask;
    }
    return nullptr;
  }

 private:
  static constexpr std::size_t minEntries = 256;
  static constexpr int maxProbes = 32;

  void grow() {
    std::vector<Entry> old(entries_.size() * 2);
    old.swap(entries_);
    const std::size_t mask = entries_.size() - 1;
    for (const Entry& entry : old) {
      if (entry.round != round_) continue;
      std::size_t slot = entry.hash & mask;
      while (entries_[slot].round == round_) slot = (slot + 1) & mask;
      entries_[slot] = entry;
    }
  }

  std::vector<Entry> entries_;
  std::size_t used_ = 0;
  std::uint32_t round_ = 0;
};

}  // namespace zeb::detail
