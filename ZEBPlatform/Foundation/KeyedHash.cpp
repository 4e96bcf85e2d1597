#include <ZEBPlatform/Foundation/KeyedHash.h>
#include <ZEBPlatform/Foundation/detail/StringHash.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Linux/detail/Random.h>

#include <array>
#include <span>

namespace zeb::detail {

namespace {

using Key = std::array<std::uint64_t, 2>;

const Key& processKey() noexcept {
  static const Key key = [] {
    Key drawn;
    fillWithRandomBytes(std::as_writable_bytes(std::span(drawn)));
    return drawn;
  }();
  return key;
}

/// The last word holds the bytes after the whole words, and the length.
std::uint64_t finishBytes(KeyedHasher& hasher, std::uint64_t tail, std::size_t length) noexcept {
  hasher.absorb(std::uint64_t{length} << 56 | tail);
  return hasher.finish();
}

}  // namespace

KeyedHasher::KeyedHasher() noexcept {
  const Key& key = processKey();
  a_ = key[0] ^ 0x736f6d6570736575u;
  b_ = key[1] ^ 0x646f72616e646f6du;
  c_ = key[0] ^ 0x6c7967656e657261u;
  d_ = key[1] ^ 0x7465646279746573u;
}

std::uint64_t keyedHash(std::string_view bytes) noexcept {
  KeyedHasher hasher;
  const std::size_t length = bytes.size();
  while (bytes.size() >= 8) {
    hasher.absorb(loadWord(bytes.data()));
    bytes.remove_prefix(8);
  }
  return finishBytes(hasher, loadTail(bytes.data(), bytes.size()), length);
}

std::uint64_t keyedHash(std::uint64_t word) noexcept {
  KeyedHasher hasher;
  hasher.absorb(word);
  return hasher.finish();
}

std::uint64_t keyedHash(const StringStorage& text) noexcept {
  if (!text.isWide()) return keyedHash(std::string_view(text.ascii(), text.length));
  KeyedHasher hasher;
  const std::u16string_view units(text.units(), text.length);
  const std::uint64_t tail =
      visitUTF8Words(units, [&](std::uint64_t word) { hasher.absorb(word); });
  return finishBytes(hasher, tail, utf8Length(units));
}

}  // namespace zeb::detail
