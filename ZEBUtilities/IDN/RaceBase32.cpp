#include <IDN/ArgumentsPrivate.h>
#include <IDN/RaceBase32.h>

namespace zeb {

namespace {

constexpr XcodeOctet outside = 255;

}  // namespace

XcodeOctet Xcode_enmap32_race(XcodeOctet value) noexcept {
  if (value >= 32) return outside;
  return static_cast<XcodeOctet>(value < 26 ? 'a' + value : '2' + (value - 26));
}

XcodeOctet Xcode_demap32_race(XcodeOctet letter) noexcept {
  if (letter >= '2' && letter <= '7') return static_cast<XcodeOctet>(letter - '2' + 26);
  const XcodeOctet lowered = letter | 0x20;
  return lowered >= 'a' && lowered <= 'z' ? static_cast<XcodeOctet>(lowered - 'a') : outside;
}

XcodeResult Xcode_enbase32_race(const XcodeOctet* octets, std::int32_t count, XcodeOctet* letters,
                                std::int32_t* length) noexcept {
  if (detail::isMissing(octets, count, letters, length)) return XcodeBadArgument;
  if ((std::int64_t{count} * 8 + 4) / 5 > *length) return XcodeOverflow;
  unsigned bits = 0, bitCount = 0;
  XcodeOctet* next = letters;
  for (std::int32_t i = 0; i < count; ++i) {
    bits = (bits << 8 | octets[i]) & 0xFFF;
    for (bitCount += 8; bitCount >= 5; bitCount -= 5) {
      *next++ = Xcode_enmap32_race(bits >> (bitCount - 5) & 31);
    }
  }
  if (bitCount > 0) *next++ = Xcode_enmap32_race(bits << (5 - bitCount) & 31);
  *length = static_cast<std::int32_t>(next - letters);
  return XcodeOK;
}

XcodeResult Xcode_debase32_race(const XcodeOctet* letters, std::int32_t count, XcodeOctet* octets,
                                std::int32_t* length) noexcept {
  if (detail::isMissing(letters, count, octets, length)) return XcodeBadArgument;
  if (std::int64_t{count} * 5 / 8 > *length) return XcodeOverflow;
  unsigned bits = 0, bitCount = 0;
  XcodeOctet* next = octets;
  for (std::int32_t i = 0; i < count; ++i) {
    const XcodeOctet value = Xcode_demap32_race(letters[i]);
    if (value == outside) return XcodeRaceBase32Decode;
    bits = (bits << 5 | value) & 0xFFF;
    bitCount += 5;
    if (bitCount < 8) continue;
    bitCount -= 8;
    *next++ = static_cast<XcodeOctet>(bits >> bitCount);
  }
  // A whole letter of left-over bits is one too many.
  if (bitCount >= 5 || (bits & ((1U << bitCount) - 1)) != 0) return XcodeRaceBase32Decode;
  *length = static_cast<std::int32_t>(next - octets);
  return XcodeOK;
}

}  // namespace zeb
