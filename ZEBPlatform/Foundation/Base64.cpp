#include <ZEBPlatform/Foundation/NSData.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace zeb {

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::uint8_t invalid = 0xFF;

constexpr std::array<std::uint8_t, 256> digitValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(invalid);
  for (std::size_t index = 0; index < alphabet.size(); ++index) {
    values[static_cast<unsigned char>(alphabet[index])] = static_cast<std::uint8_t>(index);
  }
  return values;
}();

}  // namespace

NSString NSData::base64EncodedString() const {
  if (isNil()) return nullptr;
  const std::span<const std::byte> input = bytes();
  std::string text;
  text.reserve((input.size() + 2) / 3 * 4);
  for (std::size_t index = 0; index < input.size(); index += 3) {
    const std::size_t present = std::min<std::size_t>(3, input.size() - index);
    std::uint32_t group = 0;
    for (std::size_t offset = 0; offset < 3; ++offset) {
      group = group << 8 |
              (offset < present ? std::to_integer<std::uint32_t>(input[index + offset]) : 0u);
    }
    for (std::size_t digit = 0; digit < 4; ++digit) {
      text += digit <= present ? alphabet[group >> (18 - 6 * digit) & 0x3F] : '=';
    }
  }
  return NSString(std::string_view(text));
}

NSData NSData::dataWithBase64EncodedString(const NSString& text) {
  if (text.isNil()) return nullptr;
  const std::string characters = text.utf8();
  std::string_view digits = characters;
  if (digits.size() % 4 != 0) return nullptr;
  std::size_t padding = 0;
  while (padding < 2 && digits.ends_with('=')) {
    digits.remove_suffix(1);
    ++padding;
  }
  std::vector<std::byte> bytes;
  bytes.reserve(digits.size() / 4 * 3 + 2);
  std::uint32_t group = 0;
  unsigned bits = 0;
  for (const char digit : digits) {
    const std::uint8_t value = digitValues[static_cast<unsigned char>(digit)];
    if (value == invalid) return nullptr;
    group = (group << 6 | value) & 0xFFFF;
    bits += 6;
    if (bits < 8) continue;
    bits -= 8;
    bytes.push_back(static_cast<std::byte>(group >> bits & 0xFF));
  }
  // Canonical text has no left-over bits that are set.
  if (group & ((1u << bits) - 1)) return nullptr;
  return dataWithBytes(bytes);
}

}  // namespace zeb
