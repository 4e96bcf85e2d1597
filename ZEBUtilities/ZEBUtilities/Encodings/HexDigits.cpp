#include <ZEBPlatform/Json/detail/ByteBlock.h>
#include <ZEBUtilities/Encodings/HexDigitsPrivate.h>

#include <array>
#include <cstdint>
#include <cstring>

namespace zeb::detail {

namespace {

constexpr std::size_t blockBytes = sizeof(ByteBlock);
constexpr char lowercaseDigits[] = "0123456789abcdef";
constexpr std::uint8_t noDigit = 0xFF;

/// The value of each character as a digit, or `noDigit`.
constexpr std::array<std::uint8_t, 256> digitValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(noDigit);
  for (std::uint8_t value = 0; value < 16; ++value) {
    const char digit = lowercaseDigits[value];
    values[static_cast<std::uint8_t>(digit)] = value;
    if (digit >= 'a') values[static_cast<std::uint8_t>(digit - 'a' + 'A')] = value;
  }
  return values;
}();

std::uint8_t valueOf(char digit) noexcept { return digitValues[static_cast<std::uint8_t>(digit)]; }

/// All ones in the lanes for which the comparison holds.
template <class Lanes>
ByteBlock maskOf(Lanes comparison) noexcept {
  return reinterpret_cast<ByteBlock>(comparison);
}

void store(ByteBlock block, void* to) noexcept { std::memcpy(to, &block, blockBytes); }

/// The digits of the values 0 to 15.
ByteBlock digitsOf(ByteBlock values) noexcept {
  return values + '0' + (maskOf(values > 9) & ('a' - '0' - 10));
}

/// The values of the digits; `faults` becomes non-zero if a character is not a digit.
ByteBlock valuesOf(ByteBlock characters, ByteBlock& faults) noexcept {
  const ByteBlock fromZero = characters - '0';
  const ByteBlock fromA = (characters | 0x20) - 'a';
  const ByteBlock isDigit = maskOf(fromZero <= 9);
  const ByteBlock isLetter = maskOf(fromA <= 5);
  faults |= ~(isDigit | isLetter);
  return (fromZero & isDigit) | ((fromA + 10) & isLetter);
}

}  // namespace

void encodeHexByByte(std::span<const std::byte> bytes, char* digits) noexcept {
  for (const std::byte byte : bytes) {
    *digits++ = lowercaseDigits[std::to_integer<unsigned>(byte >> 4)];
    *digits++ = lowercaseDigits[std::to_integer<unsigned>(byte & std::byte{15})];
  }
}

void encodeHex(std::span<const std::byte> bytes, char* digits) noexcept {
  for (; bytes.size() >= blockBytes; bytes = bytes.subspan(blockBytes)) {
    const ByteBlock block = loadBlock(reinterpret_cast<const char*>(bytes.data()));
    const ByteBlock high = digitsOf(block >> 4);
    const ByteBlock low = digitsOf(block & 15);
    store(
        __builtin_shufflevector(high, low, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23),
        digits);
    store(__builtin_shufflevector(high, low, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30,
                                  15, 31),
          digits + blockBytes);
    digits += 2 * blockBytes;
  }
  encodeHexByByte(bytes, digits);
}

bool decodeHexByByte(const char* digits, std::span<std::byte> bytes) noexcept {
  unsigned faults = 0;
  for (std::byte& byte : bytes) {
    const unsigned high = valueOf(*digits++);
    const unsigned low = valueOf(*digits++);
    faults |= high | low;
    byte = static_cast<std::byte>(high << 4 | low);
  }
  return faults < 16;
}

bool decodeHex(const char* digits, std::span<std::byte> bytes) noexcept {
  ByteBlock faults{};
  for (; bytes.size() >= blockBytes; bytes = bytes.subspan(blockBytes)) {
    const ByteBlock first = valuesOf(loadBlock(digits), faults);
    const ByteBlock second = valuesOf(loadBlock(digits + blockBytes), faults);
    const ByteBlock high = __builtin_shufflevector(first, second, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18,
                                                   20, 22, 24, 26, 28, 30);
    const ByteBlock low = __builtin_shufflevector(first, second, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19,
                                                  21, 23, 25, 27, 29, 31);
    store(high << 4 | low, bytes.data());
    digits += 2 * blockBytes;
  }
  return decodeHexByByte(digits, bytes) && !anySet(faults);
}

}  // namespace zeb::detail
