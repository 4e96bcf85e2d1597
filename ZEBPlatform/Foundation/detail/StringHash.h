#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace zeb::detail {

/// The next `count` (below 8) bytes as a little-endian number, without reading past them.
constexpr std::uint64_t loadTail(const char* bytes, std::size_t count) noexcept {
  const auto at = [bytes](std::size_t index) -> std::uint64_t {
    return static_cast<unsigned char>(bytes[index]);
  };
  if (!std::is_constant_evaluated() && count >= 4) {
    std::uint32_t low;
    std::uint32_t high;
    std::memcpy(&low, bytes, 4);
    std::memcpy(&high, bytes + count - 4, 4);
    return low | std::uint64_t{high} << (8 * (count - 4));
  }
  if (!std::is_constant_evaluated()) {
    if (count == 0) return 0;
    // First, middle and last of up to three bytes: some may be the same one.
    return at(0) | at(count / 2) << (8 * (count / 2)) | at(count - 1) << (8 * (count - 1));
  }
  std::uint64_t word = 0;
  for (std::size_t index = 0; index < count; ++index) word |= at(index) << (8 * index);
  return word;
}

constexpr std::uint64_t loadWord(const char* bytes) noexcept {
  if (!std::is_constant_evaluated()) {
    std::uint64_t word;
    std::memcpy(&word, bytes, 8);
    return word;
  }
  std::uint64_t word = 0;
  for (std::size_t index = 0; index < 8; ++index) {
    word |= std::uint64_t{static_cast<unsigned char>(bytes[index])} << (8 * index);
  }
  return word;
}

static_assert(std::endian::native == std::endian::little, "the word loads assume it");

/// 0 if the words at the starts are equal, and those `second` bytes after them, too.
template <class Word>
inline Word differenceOfWords(const char* left, const char* right, std::size_t second) noexcept {
  Word words[4];
  std::memcpy(&words[0], left, sizeof(Word));
  std::memcpy(&words[1], right, sizeof(Word));
  std::memcpy(&words[2], left + second, sizeof(Word));
  std::memcpy(&words[3], right + second, sizeof(Word));
  return (words[0] ^ words[1]) | (words[2] ^ words[3]);
}

/// As memcmp() == 0, but inline, because most texts are short. Two words that may overlap cover
/// every length from one word to two, without a branch for each byte.
[[gnu::always_inline]] inline bool equalBytes(const char* left, const char* right,
                                              std::size_t count) noexcept {
  if (count <= 16) [[likely]] {
    if (count >= 8) return differenceOfWords<std::uint64_t>(left, right, count - 8) == 0;
    if (count >= 4) return differenceOfWords<std::uint32_t>(left, right, count - 4) == 0;
    if (count >= 2) return differenceOfWords<std::uint16_t>(left, right, count - 2) == 0;
    return count == 0 || *left == *right;
  }
  if (count <= 32) {
    return (differenceOfWords<std::uint64_t>(left, right, 8) |
            differenceOfWords<std::uint64_t>(left + count - 16, right + count - 16, 8)) == 0;
  }
  for (std::size_t offset = 0; offset + 16 < count; offset += 16) {
    if (differenceOfWords<std::uint64_t>(left + offset, right + offset, 8) != 0) return false;
  }
  return differenceOfWords<std::uint64_t>(left + count - 16, right + count - 16, 8) == 0;
}

constexpr std::uint64_t mixHash(std::uint64_t hash, std::uint64_t word) noexcept {
  hash = (hash ^ word) * 0x9E3779B97F4A7C15u;
  return hash ^ (hash >> 29);
}

/// Never 0, which stands for a hash not computed yet.
constexpr std::uint32_t finishHash(std::uint64_t hash) noexcept {
  hash *= 0xD6E8FEB86659FD93u;
  const auto folded = static_cast<std::uint32_t>(hash >> 32);
  return folded ? folded : 1;
}

/// The state that the hash of `length` bytes starts from.
constexpr std::uint64_t startHash(std::size_t length) noexcept {
  return length * 0xA0761D6478BD642Fu;
}

/// The hash of bytes, word by word. `tailOf` loads the last, incomplete word as `loadTail` does,
/// and `see` is called with each word.
template <class TailOf, class See>
constexpr std::uint32_t hashWords(const char* bytes, std::size_t length, const TailOf& tailOf,
                                  const See& see) noexcept {
  std::uint64_t hash = startHash(length);
  for (; length >= 8; bytes += 8, length -= 8) {
    const std::uint64_t word = loadWord(bytes);
    see(word);
    hash = mixHash(hash, word);
  }
  const std::uint64_t tail = tailOf(bytes, length);
  see(tail);
  return finishHash(mixHash(hash, tail));
}

/// The hash of a string's UTF-8 form, the same at compile time and run time and in every process.
/// It can therefore be computed for literals, and is no defence against chosen keys (see
/// KeyedHash.h).
constexpr std::uint32_t hashOfUTF8(const char* bytes, std::size_t length) noexcept {
  return hashWords(bytes, length, loadTail, [](std::uint64_t) {});
}

}  // namespace zeb::detail
