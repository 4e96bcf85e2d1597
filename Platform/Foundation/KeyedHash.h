#pragma once

#include <Foundation/ValueStorage.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zeb {

namespace detail {

/// SipHash-1-3 under a secret key that is drawn once per process, taken in word by word: slower than
/// the public hash, but nobody outside the process can prepare collisions.
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
/// Of a text's UTF-8 form, which is not made for it.
std::uint64_t keyedHash(const StringStorage& text) noexcept;

}  // namespace detail

}  // namespace zeb
