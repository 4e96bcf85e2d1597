#include <ZEBPlatform/Foundation/CollectionLimitPrivate.h>
#include <ZEBPlatform/Foundation/detail/DistinctElements.h>
#include <ZEBPlatform/Foundation/detail/HashTable.h>
#include <ZEBPlatform/Linux/detail/MemoryPages.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>

namespace zeb::detail {

namespace {

/// A table of positions only. Unlike a set, it takes no references to the values, and its slots
/// have the hashes, so that a search reads a value only when it probably is the equal one.
class PositionIndex {
 public:
  explicit PositionIndex(std::span<const Value> values)
      : values_(values), mask_(indexSlots(static_cast<std::uint32_t>(values.size())) - 1) {
    slots_.reset(static_cast<Slot*>(std::calloc(std::size_t{mask_} + 1, sizeof(Slot))));
    if (!slots_) throw std::bad_alloc();
    preferLargePages(slots_.get(), (std::size_t{mask_} + 1) * sizeof(Slot));
  }

  // Three steps towards the value that a search will compare first. Each loads what the step before
  // it has begun to load, so that searches for several values wait for memory at the same time.
  void loadSlot(std::uint32_t hash) const noexcept { __builtin_prefetch(&slots_[hash & mask_]); }
  void loadValue(std::uint32_t hash) const noexcept {
    const Slot& slot = slots_[hash & mask_];
    if (slot.hash == hash && slot.next) __builtin_prefetch(&values_[slot.next - 1]);
  }
  void loadContent(std::uint32_t hash) const noexcept {
    const Slot& slot = slots_[hash & mask_];
    if (slot.hash != hash || !slot.next) return;
    const Value& value = values_[slot.next - 1];
    if (value.isCounted()) __builtin_prefetch(reinterpret_cast<const void*>(value.payload()));
  }

  enum class Addition { added, known, tooManyProbes };
  Addition add(std::uint32_t position, std::uint32_t hash, std::uint32_t maxProbes) {
    const Value& value = values_[position];
    for (std::uint32_t probe = 0; probe <= maxProbes; ++probe) {
      Slot& slot = slots_[(hash + probe) & mask_];
      if (!slot.next) {
        slot = {hash, position + 1};
        return Addition::added;
      }
      if (slot.hash != hash) continue;
      const Value& other = values_[slot.next - 1];
      if (value.isIdenticalTo(other) || value.isEqual(other)) return Addition::known;
    }
    return Addition::tooManyProbes;
  }

 private:
  struct Slot {
    std::uint32_t hash;
    std::uint32_t next;  ///< position + 1, or 0 in a free slot
  };
  struct Free {
    void operator()(Slot* slots) const noexcept { std::free(slots); }
  };

  std::span<const Value> values_;
  std::uint32_t mask_;
  std::unique_ptr<Slot[], Free> slots_;
};

/// None if a search needs too many probes.
template <class HashOf>
std::optional<std::vector<std::uint32_t>> findDistinct(std::span<const Value> values,
                                                       std::uint32_t maxProbes,
                                                       const HashOf& hashOf) {
  constexpr std::size_t blockLength = 32;
  PositionIndex index(values);
  std::vector<std::uint32_t> distinct;
  std::array<std::uint32_t, blockLength> hashes;
  for (std::size_t start = 0; start < values.size(); start += blockLength) {
    const auto block = std::span(hashes).first(std::min(blockLength, values.size() - start));
    for (std::size_t place = 0; place < block.size(); ++place) {
      block[place] = hashOf(values[start + place]);
      index.loadSlot(block[place]);
    }
    for (const std::uint32_t hash : block) index.loadValue(hash);
    for (const std::uint32_t hash : block) index.loadContent(hash);
    for (std::size_t place = 0; place < block.size(); ++place) {
      const auto position = static_cast<std::uint32_t>(start + place);
      const auto addition = index.add(position, block[place], maxProbes);
      if (addition == PositionIndex::Addition::tooManyProbes) return std::nullopt;
      if (addition == PositionIndex::Addition::added) distinct.push_back(position);
    }
  }
  return distinct;
}

}  // namespace

std::vector<std::uint32_t> distinctPositions(std::span<const Value> values) {
  requireCollectionCount(values.size());
  if (auto distinct = findDistinct(values, maxTrustedProbes, keyHashOf))
    return *std::move(distinct);
  // The values were chosen to collide, or differ only where the public hash does not look.
  const auto secretHash = [](const Value& value) {
    return static_cast<std::uint32_t>(keyedHashOf(value));
  };
  return *findDistinct(values, maxCollectionCount, secretHash);
}

}  // namespace zeb::detail
