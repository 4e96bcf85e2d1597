#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/detail/DataBuilder.h>
#include <ZEBPlatform/Foundation/detail/StringBuilding.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Encodings/Base32Codec.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zeb {

namespace {

constexpr std::size_t groupBytes = 5;
constexpr std::size_t groupCharacters = 8;
constexpr char encodingAlphabet[] = "abcdefghijkmnpqrstuvwxyz23456789";
/// The number of "=" at the end, by the input's length modulo `groupBytes`.
constexpr std::size_t paddingLengths[groupBytes] = {0, 6, 4, 3, 1};
/// The number of bytes that an incomplete group of characters gives.
constexpr std::size_t partialGroupBytes[groupCharacters] = {0, 1, 1, 1, 2, 3, 3, 4};

using CharacterPair = std::array<char, 2>;
/// The characters for ten bits. Pairs halve the number of look-ups.
constexpr auto encodedPairs = [] {
  std::array<CharacterPair, 1024> pairs{};
  for (std::size_t bits = 0; bits < pairs.size(); ++bits) {
    pairs[bits] = {encodingAlphabet[bits >> 5], encodingAlphabet[bits & 31]};
  }
  return pairs;
}();

constexpr std::uint8_t ignored = 0xFF;
/// The value of each character. "=" is ignored, because it is removed before decoding.
constexpr auto decodedValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(ignored);
  for (std::uint8_t value = 0; value < 26; ++value) values['A' + value] = value;
  for (std::uint8_t value = 26; value < 32; ++value) values['2' + value - 26] = value;
  return values;
}();

/// Calls `convert`; nil if that lacks memory, would make a string that is too long, or raises a
/// platform exception. Other exceptions pass.
template <class Convert>
auto orNil(const Convert& convert) -> decltype(convert()) {
  try {
    return convert();
  } catch (const NSException&) {
  } catch (const std::bad_alloc&) {
  } catch (const std::length_error&) {
  }
  return nullptr;
}

void encodeGroup(const std::byte* bytes, char* characters) noexcept {
  const auto at = [bytes](std::size_t index) {
    return std::to_integer<std::uint64_t>(bytes[index]);
  };
  const std::uint64_t bits = at(0) << 32 | at(1) << 24 | at(2) << 16 | at(3) << 8 | at(4);
  const auto put = [&](std::size_t place, unsigned shift) {
    std::memcpy(characters + place, encodedPairs[bits >> shift & 1023].data(), 2);
  };
  put(0, 30);
  put(2, 20);
  put(4, 10);
  put(6, 0);
}

/// Encodes ranges of bytes that need not end where a group ends.
class Encoder {
 public:
  explicit Encoder(char* characters) noexcept : cursor_(characters) {}

  void take(std::span<const std::byte> range) noexcept {
    if (splitBytes_ > 0) {
      const std::size_t missing = std::min(groupBytes - splitBytes_, range.size());
      keep(range.first(missing));
      range = range.subspan(missing);
      if (splitBytes_ < groupBytes) return;
      put(split_.data());
      splitBytes_ = 0;
    }
    for (; range.size() >= groupBytes; range = range.subspan(groupBytes)) put(range.data());
    keep(range);
  }

  void finish() noexcept {
    if (splitBytes_ == 0) return;
    std::fill(split_.begin() + static_cast<std::ptrdiff_t>(splitBytes_), split_.end(),
              std::byte{0});
    put(split_.data());
    const std::size_t padding = paddingLengths[splitBytes_];
    std::fill(cursor_ - padding, cursor_, '=');
  }

 private:
  void put(const std::byte* group) noexcept {
    encodeGroup(group, cursor_);
    cursor_ += groupCharacters;
  }
  void keep(std::span<const std::byte> bytes) noexcept {
    std::copy(bytes.begin(), bytes.end(),
              split_.begin() + static_cast<std::ptrdiff_t>(splitBytes_));
    splitBytes_ += bytes.size();
  }

  char* cursor_;
  std::array<std::byte, groupBytes> split_{};  ///< the beginning of a group
  std::size_t splitBytes_ = 0;
};

void putGroup(std::uint64_t bits, char* bytes) noexcept {
  bytes[0] = static_cast<char>(bits >> 32);
  bytes[1] = static_cast<char>(bits >> 24);
  bytes[2] = static_cast<char>(bits >> 16);
  bytes[3] = static_cast<char>(bits >> 8);
  bytes[4] = static_cast<char>(bits);
}

/// Writes the bytes that the characters mean and answers their number.
std::size_t decode(std::string_view characters, char* const bytes) noexcept {
  const char* next = characters.data();
  const char* const end = next + characters.size();
  char* cursor = bytes;
  std::uint64_t bits = 0;
  std::size_t count = 0;  // values in `bits`
  const auto valueOf = [](char character) -> std::uint64_t {
    return decodedValues[static_cast<std::uint8_t>(character)];
  };
  while (next != end) {
    // Whole groups without an ignored character.
    while (count == 0 && static_cast<std::size_t>(end - next) >= groupCharacters) {
      const std::uint64_t v0 = valueOf(next[0]), v1 = valueOf(next[1]), v2 = valueOf(next[2]),
                          v3 = valueOf(next[3]), v4 = valueOf(next[4]), v5 = valueOf(next[5]),
                          v6 = valueOf(next[6]), v7 = valueOf(next[7]);
      if ((v0 | v1 | v2 | v3 | v4 | v5 | v6 | v7) == ignored) break;
      putGroup(v0 << 35 | v1 << 30 | v2 << 25 | v3 << 20 | v4 << 15 | v5 << 10 | v6 << 5 | v7,
               cursor);
      next += groupCharacters;
      cursor += groupBytes;
    }
    if (next == end) break;
    const std::uint64_t value = valueOf(*next++);
    if (value == ignored) continue;
    bits = bits << 5 | value;
    if (++count < groupCharacters) continue;
    putGroup(bits, cursor);
    cursor += groupBytes;
    bits = count = 0;
  }
  if (count > 0) {
    putGroup(bits << 5 * (groupCharacters - count), cursor);
    cursor += partialGroupBytes[count];
  }
  return static_cast<std::size_t>(cursor - bytes);
}

NSData decoded(std::string_view characters) {
  const std::size_t groups = (characters.size() + groupCharacters - 1) / groupCharacters;
  detail::DataBuilder result(groups * groupBytes);
  result.setCursor(result.cursor() + decode(characters, result.cursor()));
  return result.finish();
}

}  // namespace

NSString Base32Codec::base32StringWithData(const NSData& data) {
  if (data.isNil()) return nullptr;
  return orNil([&] {
    const std::size_t groups = data.length() / groupBytes + (data.length() % groupBytes != 0);
    detail::StringStorage* const text = detail::newStringStorage<char>(groups * groupCharacters);
    NSString result = detail::adoptString(text);
    Encoder encoder(detail::contentOf<char>(text));
    data.enumerateByteRanges([&](std::span<const std::byte> range, NSRange) {
      encoder.take(range);
      return true;
    });
    encoder.finish();
    return result;
  });
}

NSData Base32Codec::dataWithBase32String(const NSString& string) {
  if (string.isNil()) return nullptr;
  return orNil([&] {
    if (string.isASCII()) return decoded(string.asciiView());
    // A mutable text may store plain ASCII in 16-bit units.
    const std::u16string_view units = string.utf16View();
    if (!detail::isASCII(units)) return NSData::data();
    return decoded(std::string(units.begin(), units.end()));
  });
}

Class* Base32Codec::runtimeClass() {
  static Class* const cls = registerClass(
      "Base32Codec", {
                         classMethod("base32StringWithData:", &Base32Codec::base32StringWithData),
                         classMethod("dataWithBase32String:", &Base32Codec::dataWithBase32String),
                     });
  return cls;
}

}  // namespace zeb
