#include <IDN/AceLabelPrivate.h>
#include <IDN/ArgumentsPrivate.h>
#include <IDN/OctetStrings.h>
#include <IDN/Punycode.h>
#include <IDN/UTFConversions.h>

#include <algorithm>
#include <array>

namespace zeb {

namespace {

// The parameters of RFC 3492, section 5.
constexpr std::uint32_t base = 36;
constexpr std::uint32_t tmin = 1;
constexpr std::uint32_t tmax = 26;
constexpr std::uint32_t skew = 38;
constexpr std::uint32_t damp = 700;
constexpr std::uint32_t initialBias = 72;
constexpr std::uint32_t initialN = 128;
constexpr XcodeOctet delimiter = '-';

constexpr std::uint64_t maxInteger = UINT32_MAX;
constexpr std::int32_t maxPunycodeOctets = 256;
constexpr std::int32_t maxLabelPunycodeOctets = 252;

constexpr XcodeOctet noDigit = 0xFF;
constexpr std::array<XcodeOctet, 256> digitValues = [] {
  std::array<XcodeOctet, 256> values;
  values.fill(noDigit);
  for (XcodeOctet i = 0; i < 26; ++i) {
    values['a' + i] = i;
    values['A' + i] = i;
  }
  for (XcodeOctet i = 0; i < 10; ++i) values['0' + i] = static_cast<XcodeOctet>(26 + i);
  return values;
}();

constexpr XcodeOctet digitOf(std::uint32_t value) noexcept {
  return static_cast<XcodeOctet>(value < 26 ? 'a' + value : '0' + (value - 26));
}

constexpr std::uint32_t threshold(std::uint32_t k, std::uint32_t bias) noexcept {
  return k <= bias ? tmin : std::min(k - bias, tmax);
}

// Most of the time goes into divisions, so most of them are looked up in tables.

constexpr std::uint32_t maxFinalDelta = (base - tmin) * tmax / 2;
constexpr std::array<XcodeOctet, maxFinalDelta + 1> finalBiases = [] {
  std::array<XcodeOctet, maxFinalDelta + 1> biases;
  for (std::uint32_t delta = 0; delta <= maxFinalDelta; ++delta) {
    biases[delta] = static_cast<XcodeOctet>((base - tmin + 1) * delta / (delta + skew));
  }
  return biases;
}();

constexpr std::uint32_t adapted(std::uint32_t delta, std::uint32_t points, bool isFirst) noexcept {
  delta = isFirst ? delta / damp : delta / 2;
  delta += delta / points;
  std::uint32_t k = 0;
  for (; delta > maxFinalDelta; k += base) delta /= base - tmin;
  return k + finalBiases[delta];
}

/// 2^36 divided by each possible divisor and rounded up.
constexpr unsigned reciprocalBits = 36;
constexpr std::array<std::uint64_t, base> reciprocals = [] {
  std::array<std::uint64_t, base> values{};
  for (std::uint32_t d = base - tmax; d < base; ++d) {
    values[d] = ((std::uint64_t{1} << reciprocalBits) + d - 1) / d;
  }
  return values;
}();

/// The quotient; exact, because the error of a reciprocal is too small for numbers below 2^30.
constexpr std::uint32_t divided(std::uint32_t number, std::uint32_t divisor) noexcept {
  if (number >> 30 != 0) return number / divisor;
  return static_cast<std::uint32_t>(number * reciprocals[divisor] >> reciprocalBits);
}

/// A set of places in the input.
class Places {
 public:
  /// For places before `end` only.
  explicit Places(std::uint32_t end) noexcept { std::fill_n(words_, (end + 63) / 64, 0); }

  void insert(std::uint32_t place) noexcept { words_[place / 64] |= bitOf(place); }
  void remove(std::uint32_t place) noexcept { words_[place / 64] &= ~bitOf(place); }

  /// How many places before this one are in the set.
  std::uint32_t countBefore(std::uint32_t place) const noexcept {
    std::uint32_t sum = popcount(words_[place / 64] & (bitOf(place) - 1));
    for (std::uint32_t word = 0; word < place / 64; ++word) sum += popcount(words_[word]);
    return sum;
  }

 private:
  static constexpr std::uint64_t bitOf(std::uint32_t place) noexcept {
    return std::uint64_t{1} << place % 64;
  }
  /// Without a call of the compiler's library, which `std::popcount` is for older processors.
  static constexpr std::uint32_t popcount(std::uint64_t bits) noexcept {
    bits -= bits >> 1 & 0x5555555555555555;
    bits = (bits & 0x3333333333333333) + (bits >> 2 & 0x3333333333333333);
    bits = (bits + (bits >> 4)) & 0x0F0F0F0F0F0F0F0F;
    return static_cast<std::uint32_t>(bits * 0x0101010101010101 >> 56);
  }

  std::uint64_t words_[XcodeMaxPunycodeCodePoints / 64];
};

/// Writes the digits of `delta`. Null if the destination is full.
XcodeOctet* writeInteger(std::uint32_t delta, std::uint32_t bias, XcodeOctet* next,
                         const XcodeOctet* end) noexcept {
  for (std::uint32_t k = base;; k += base) {
    if (next == end) return nullptr;
    const std::uint32_t t = threshold(k, bias);
    if (delta < t) break;
    const std::uint32_t quotient = divided(delta - t, base - t);
    *next++ = digitOf(delta - quotient * (base - t));
    delta = quotient;
  }
  *next++ = digitOf(delta);
  return next;
}

constexpr XcodeOctet acePrefix[] = {'x', 'n', '-', '-'};
constexpr std::int32_t acePrefixLength = 4;

}  // namespace

// The RFC's encoder walks over the input once for each different code point, to count what the
// decoder will have inserted before it. This one sorts the code points and counts in a set of the
// places that are not yet encoded, so that the time does not grow with the square of the length.
XcodeResult punycode_encode(std::int32_t count, const XcodeCodePoint* codePoints,
                            std::int32_t* length, XcodeOctet* octets) noexcept {
  if (detail::isMissing(codePoints, count, octets, length)) return XcodeBadArgument;
  if (count > XcodeMaxPunycodeCodePoints) return XcodeOverflow;
  XcodeOctet* next = octets;
  XcodeOctet* const end = octets + *length;

  // Each other code point in the upper half, with its place in the lower half.
  std::uint64_t others[XcodeMaxPunycodeCodePoints];
  std::uint64_t* othersEnd = others;
  const auto size = static_cast<std::uint32_t>(count);
  Places waiting(size);
  for (std::uint32_t i = 0; i < size; ++i) {
    if (codePoints[i] < initialN) {
      if (next == end) return XcodeBadArgument;
      *next++ = static_cast<XcodeOctet>(codePoints[i]);
    } else {
      if (codePoints[i] > maxInteger) return XcodeOverflow;
      *othersEnd++ = codePoints[i] << 32 | i;
      waiting.insert(i);
    }
  }
  if (othersEnd - others > 1) std::sort(others, othersEnd);

  const auto basicCount = static_cast<std::uint32_t>(next - octets);
  std::uint32_t handled = basicCount;
  if (basicCount > 0) {
    if (next == end) return XcodeBadArgument;
    *next++ = delimiter;
  }
  // The decoder's state: what it has inserted last, and the index after that.
  std::uint64_t n = initialN;
  std::uint32_t i = 0;
  std::uint32_t bias = initialBias;
  for (const std::uint64_t* other = others; other != othersEnd; ++other) {
    const std::uint64_t codePoint = *other >> 32;
    const auto place = static_cast<std::uint32_t>(*other);
    waiting.remove(place);
    const std::uint32_t index = place - waiting.countBefore(place);
    const std::uint64_t delta = (codePoint - n) * (handled + 1) + index - i;
    if (delta > maxInteger) return XcodeOverflow;
    next = writeInteger(static_cast<std::uint32_t>(delta), bias, next, end);
    if (next == nullptr) return XcodeBadArgument;
    if (other + 1 == othersEnd) break;  // many labels have one such code point and need no bias
    bias = adapted(static_cast<std::uint32_t>(delta), handled + 1, handled == basicCount);
    n = codePoint;
    i = index + 1;
    ++handled;
  }
  *length = static_cast<std::int32_t>(next - octets);
  return XcodeOK;
}

XcodeResult punycode_decode(std::int32_t count, const XcodeOctet* octets, std::int32_t* length,
                            XcodeCodePoint* codePoints) noexcept {
  if (detail::isMissing(octets, count, codePoints, length)) return XcodeBadArgument;
  // Each code point is inserted into those before it, so many would take quadratic time.
  const bool isLimited = *length > XcodeMaxPunycodeCodePoints;
  const XcodeResult fullResult = isLimited ? XcodeOverflow : XcodeBadArgument;
  const auto capacity =
      static_cast<std::uint32_t>(isLimited ? XcodeMaxPunycodeCodePoints : *length);
  const XcodeOctet* next = octets;
  const XcodeOctet* const end = octets + count;

  // A hyphen at the start is no delimiter: there is one only after basic code points.
  std::uint32_t written = 0;
  std::int32_t basicCount = count;
  while (basicCount > 0 && octets[basicCount - 1] != delimiter) --basicCount;
  if (--basicCount > 0) {
    if (static_cast<std::uint32_t>(basicCount) > capacity) return fullResult;
    for (; next != octets + basicCount; ++next) {
      if (*next >= initialN) return XcodeBadArgument;
      codePoints[written++] = *next;
    }
    ++next;
  }

  std::uint64_t n = initialN;
  std::uint64_t i = 0;
  std::uint32_t bias = initialBias;
  for (bool isFirst = true; next != end; isFirst = false) {
    const std::uint64_t oldI = i;
    std::uint64_t weight = 1;
    for (std::uint32_t k = base;; k += base) {
      if (next == end) return XcodeBadArgument;
      const std::uint32_t digit = digitValues[*next++];
      if (digit == noDigit) return XcodeBadArgument;
      // No sum exceeds 64 bits: only digits that are not 0 are followed by others, and they make
      // `i` at least as large as their weight.
      i += digit * weight;
      if (i > maxInteger) return XcodeOverflow;
      const std::uint32_t t = threshold(k, bias);
      if (digit < t) break;
      weight *= base - t;
    }
    bias = adapted(static_cast<std::uint32_t>(i - oldI), written + 1, isFirst);
    n += static_cast<std::uint32_t>(i) / (written + 1);
    i = static_cast<std::uint32_t>(i) % (written + 1);
    if (n > maxInteger) return XcodeOverflow;
    if (written == capacity) return fullResult;
    for (std::uint32_t j = written; j > i; --j) codePoints[j] = codePoints[j - 1];
    codePoints[i] = n;
    ++i;
    ++written;
  }
  *length = static_cast<std::int32_t>(written);
  return XcodeOK;
}

bool is_all_basic(std::int32_t count, const XcodeCodePoint* codePoints) noexcept {
  XcodeCodePoint bits = 0;
  for (std::int32_t i = 0; codePoints && i < count; ++i) bits |= codePoints[i];
  return bits < 0x80;
}

XcodeResult detail::encodeAceLabel(const XcodeCodePoint* codePoints, std::int32_t count,
                                   XcodeOctet* octets, std::int32_t* length) noexcept {
  XcodeOctet* const punycode = std::copy_n(acePrefix, acePrefixLength, octets);
  XcodeOctet encoded[maxPunycodeOctets];
  std::int32_t encodedLength = maxPunycodeOctets;
  const XcodeResult result = punycode_encode(count, codePoints, &encodedLength, encoded);
  if (result != XcodeOK) return result;
  if (encodedLength > maxLabelPunycodeOctets) return XcodeOverflow;
  *std::copy_n(encoded, encodedLength, punycode) = 0;
  *length = encodedLength + acePrefixLength;
  return XcodeOK;
}

XcodeResult Xcode_puny_encodeString(const XcodeCodePoint* codePoints, std::int32_t count,
                                    XcodeOctet* octets, std::int32_t* length) noexcept {
  if (count < 1 || codePoints == nullptr || octets == nullptr || length == nullptr) {
    return XcodeBadArgument;
  }
  std::fill_n(octets, std::max(*length, 0), XcodeOctet{0});
  if (count > XcodeMaxLabelCodePoints) return XcodeOverflow;
  if (!is_all_basic(count, codePoints)) {
    return detail::encodeAceLabel(codePoints, count, octets, length);
  }
  std::copy_n(codePoints, count, octets);
  *length = count;
  return XcodeOK;
}

XcodeResult Xcode_puny_decodeString(const XcodeOctet* octets, std::int32_t count, XcodeUnit* units,
                                    std::int32_t* length) noexcept {
  if (count < 1 || detail::isMissing(octets, count, units, length)) return XcodeBadArgument;
  if (!detail::hasAcePrefix(octets, count)) {
    return expand_Octet_to_UChar(octets, count, units, length);
  }
  XcodeCodePoint decoded[XcodeMaxLabelCodePoints];
  std::int32_t decodedCount = XcodeMaxLabelCodePoints;
  XcodeResult result =
      punycode_decode(count - acePrefixLength, octets + acePrefixLength, &decodedCount, decoded);
  if (result != XcodeOK) return result;
  // Digits have any case, so that lowering the code points that are letters lowers all.
  for (std::int32_t i = 0; i < decodedCount; ++i) {
    if (decoded[i] >= 'A' && decoded[i] <= 'Z') decoded[i] |= 0x20;
  }
  const std::int32_t capacity = *length;
  if (decodedCount > capacity) return XcodeOverflow;
  result = Xcode_convert32BitToUTF16(decoded, decodedCount, units, length);
  if (result == XcodeOK && *length < capacity) units[*length] = 0;
  return result;
}

}  // namespace zeb
