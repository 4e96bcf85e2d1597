#pragma once

#include <ZEBPlatform/Foundation/Value.h>

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

namespace zeb {

namespace detail {

/// SipHash-1-3 under a secret key that is drawn once per process, computed word by word. Slower
/// than the public hash, but an attacker outside the process cannot prepare collisions.
class KeyedHasher {
 public:
  KeyedHasher() noexcept;

  void absorb(std::uint64_t word) noexcept {
    d_ ^= word;
    round();
    a_ ^= word;
  }
  std::uint64_t finish() noexcept {
    c_ ^= 0xFF;
    for (int i = 0; i < 3; ++i) round();
    return a_ ^ b_ ^ c_ ^ d_;
  }

 private:
  void round() noexcept {
    a_ += b_;
    c_ += d_;
    b_ = std::rotl(b_, 13) ^ a_;
    d_ = std::rotl(d_, 16) ^ c_;
    a_ = std::rotl(a_, 32);
    c_ += b_;
    a_ += d_;
    b_ = std::rotl(b_, 17) ^ c_;
    d_ = std::rotl(d_, 21) ^ a_;
    c_ = std::rotl(c_, 32);
  }

  std::uint64_t a_, b_, c_, d_;
};

std::uint64_t keyedHash(std::string_view bytes) noexcept;
std::uint64_t keyedHash(std::uint64_t word) noexcept;
/// The hash of the text's UTF-8 form, which is computed without making that form.
std::uint64_t keyedHash(const StringStorage& text) noexcept;

}  // namespace detail

/// A hash for the standard containers, whose collisions an attacker outside the process cannot
/// choose:
///
///     std::unordered_map<std::string, int, KeyedHash<std::string>> counts;
///
/// Texts are hashed by their bytes; keys other than texts and values by their `std::hash`, which
/// must differ where the keys do. It differs from process to process. Any thread.
template <class Key>
struct KeyedHash {
  std::size_t operator()(const Key& key) const {
    if constexpr (std::derived_from<Key, Value>) {
      return std::hash<Value>()(key);
    } else if constexpr (std::convertible_to<const Key&, std::string_view>) {
      return detail::keyedHash(std::string_view(key));
    } else {
      return detail::keyedHash(std::uint64_t{std::hash<Key>()(key)});
    }
  }
};

}  // namespace zeb
