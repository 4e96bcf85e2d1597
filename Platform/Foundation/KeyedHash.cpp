#include <Foundation/KeyedHash.h>
#include <Foundation/StringHash.h>
#include <Linux/Random.h>

#include <array>
#include <bit>
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

struct SipState {
  std::uint64_t a, b, c, d;

  void round() noexcept {
    a += b;
    c += d;
    b = std::rotl(b, 13) ^ a;
    d = std::rotl(d, 16) ^ c;
    a = std::rotl(a, 32);
    c += b;
    a += d;
    b = std::rotl(b, 17) ^ c;
    d = std::rotl(d, 21) ^ a;
    c = std::rotl(c, 32);
  }

  void absorb(std::uint64_t word) noexcept {
    d ^= word;
    round();
    a ^= word;
  }
};

}  // namespace

std::uint64_t keyedHash(std::string_view bytes) noexcept {
  const Key& key = processKey();
  SipState state{key[0] ^ 0x736f6d6570736575u, key[1] ^ 0x646f72616e646f6du,
                 key[0] ^ 0x6c7967656e657261u, key[1] ^ 0x7465646279746573u};
  const std::uint64_t lengthByte = std::uint64_t{bytes.size()} << 56;
  while (bytes.size() >= 8) {
    state.absorb(loadWord(bytes.data()));
    bytes.remove_prefix(8);
  }
  state.absorb(lengthByte | loadTail(bytes.data(), bytes.size()));
  state.c ^= 0xFF;
  for (int i = 0; i < 3; ++i) state.round();
  return state.a ^ state.b ^ state.c ^ state.d;
}

}  // namespace zeb::detail
