#include <ZEBPlatform/Foundation/KeyedHash.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSURL.h>
#include <ZEBPlatform/Foundation/NumberOrderPrivate.h>
#include <ZEBPlatform/Foundation/detail/HashTable.h>

#include <bit>
#include <span>

namespace zeb {

namespace {

using detail::mixHash;

/// The bits of a date, made equal for the two zeros, which are equal dates.
std::uint64_t dateBits(const Value& date) noexcept {
  return std::bit_cast<double>(date.payload()) == 0 ? 0 : date.payload();
}

/// Fast and the same in every process, so an attacker can choose collisions.
class PublicHash {
 public:
  /// Levels of collections that are hashed; only the size counts for deeper ones.
  static constexpr int maxNesting = 4;

  void absorb(std::uint64_t word) noexcept { hash_ = mixHash(hash_, word); }
  std::uint64_t finish() const noexcept { return hash_; }

  /// The hash of a key in a table; see `keyHashOf`.
  template <class Hash>
  static std::uint64_t ofKey(const detail::DictionaryStorage& table, const Value& key,
                             const Hash& hashOf) {
    if (isCollection(key)) return hashOf(key);
    return table.hasKeyedHash() ? detail::keyHashOf(key) : key.keyHash();
  }

  [[gnu::always_inline]] static std::uint64_t ofLeaf(const Value& leaf) {
    if (leaf.isString()) return detail::hashOfString(*leaf.storageAs<detail::StringStorage>());
    if (leaf.isNumber()) return detail::hashOfNumber(leaf);
    return ofRareLeaf(leaf);
  }

  static bool isCollection(const Value& value) noexcept {
    return value.kind() >= ValueKind::Array && value.kind() <= ValueKind::OrderedSet;
  }

 private:
  static std::uint64_t ofRareLeaf(const Value& leaf) {
    const auto kind = static_cast<std::uint64_t>(leaf.kind());
    switch (leaf.kind()) {
      case ValueKind::Date:
        return mixHash(kind, dateBits(leaf));
      case ValueKind::URL:
        return mixHash(kind, NSURL(leaf).absoluteString().hash());
      case ValueKind::Data:
        return ofBytes(NSData(leaf).view());
      case ValueKind::Object:
        return leaf.objectPointer()->hash();
      default:
        return kind;
    }
  }

  /// The hash of the length and the two ends, which are all of short data.
  static std::uint64_t ofBytes(std::string_view bytes) noexcept {
    constexpr std::size_t end = 64;
    const std::string_view head = bytes.substr(0, end);
    const std::string_view tail = bytes.substr(bytes.size() - std::min(bytes.size(), end));
    return mixHash(mixHash(bytes.size(), detail::hashOfUTF8(head.data(), head.size())),
                   detail::hashOfUTF8(tail.data(), tail.size()));
  }

  std::uint64_t hash_ = 0;
};

/// Covers all content, under the secret key.
class SecretHash {
 public:
  /// As deep as documents nest. The limit bounds the stack that the recursion takes.
  static constexpr int maxNesting = 512;

  void absorb(std::uint64_t word) noexcept { hasher_.absorb(word); }
  std::uint64_t finish() noexcept { return hasher_.finish(); }

  template <class Hash>
  static std::uint64_t ofKey(const detail::DictionaryStorage&, const Value& key,
                             const Hash& hashOf) {
    return hashOf(key);
  }

  static std::uint64_t ofLeaf(const Value& leaf) {
    switch (leaf.kind()) {
      case ValueKind::Date:
        return detail::keyedHash(dateBits(leaf));
      case ValueKind::String:
        return detail::keyedHash(*leaf.storageAs<detail::StringStorage>());
      case ValueKind::URL:
        return detail::keyedHash(NSURL(leaf).absoluteString().text());
      case ValueKind::Data:
        return detail::keyedHash(NSData(leaf).view());
      default:
        return detail::keyedHash(PublicHash::ofLeaf(leaf));
    }
  }

 private:
  detail::KeyedHasher hasher_;
};

template <class Hash>
std::uint64_t collectionHash(const Value& value, int levels);

/// The hash of a value and `levels` levels of collections in it.
template <class Hash>
[[gnu::always_inline]] inline std::uint64_t contentHash(const Value& value, int levels) {
  if (!PublicHash::isCollection(value)) return Hash::ofLeaf(value);
  return collectionHash<Hash>(value, levels);
}

template <class Hash>
std::uint64_t collectionHash(const Value& value, int levels) {
  Hash hash;
  hash.absorb(static_cast<std::uint64_t>(value.kind()));
  const auto hashBelow = [levels](const Value& inner) {
    return contentHash<Hash>(inner, levels - 1);
  };
  if (value.isArray()) {
    const auto& array = *value.storageAs<detail::ArrayStorage>();
    hash.absorb(array.count);
    if (levels == 0) return hash.finish();
    for (const Value& element : std::span(array.values(), array.count)) {
      hash.absorb(hashBelow(element));
    }
    return hash.finish();
  }
  const auto& table = *value.storageAs<detail::DictionaryStorage>();
  hash.absorb(table.count);
  if (levels == 0) return hash.finish();
  // A sum where equal tables may have different orders.
  const bool isOrdered = value.isOrderedSet();
  std::uint64_t sum = 0;
  for (const DictionaryEntry& entry : std::span(table.entries, table.used)) {
    if (entry.key.isNil()) continue;
    Hash pair;
    pair.absorb(Hash::ofKey(table, entry.key, hashBelow));
    if (value.isDictionary()) pair.absorb(hashBelow(entry.value));
    sum = isOrdered ? mixHash(sum, pair.finish()) : sum + pair.finish();
  }
  hash.absorb(sum);
  return hash.finish();
}

}  // namespace

std::size_t Value::hash() const { return contentHash<PublicHash>(*this, PublicHash::maxNesting); }

std::uint64_t detail::keyedHashOf(const Value& value) {
  return contentHash<SecretHash>(value, SecretHash::maxNesting);
}

}  // namespace zeb
