#include <IDN/ArgumentsPrivate.h>
#include <IDN/OctetStrings.h>

#include <algorithm>

namespace zeb {

namespace {

constexpr XcodeOctet lowered(XcodeOctet octet) noexcept {
  return static_cast<XcodeOctet>(octet >= 'A' && octet <= 'Z' ? octet | 0x20 : octet);
}

bool isPrefixPossible(const XcodeOctet* octets, std::int32_t count, const XcodeOctet* prefix,
                      std::int32_t prefixCount) noexcept {
  return octets && prefix && prefixCount >= 0 && count >= prefixCount;
}

}  // namespace

void lower_case(XcodeOctet* octets, std::int32_t count) noexcept {
  for (std::int32_t i = 0; octets && i < count; ++i) octets[i] = lowered(octets[i]);
}

bool starts_with(const XcodeOctet* octets, std::int32_t count, const XcodeOctet* prefix,
                 std::int32_t prefixCount) noexcept {
  return isPrefixPossible(octets, count, prefix, prefixCount) &&
         std::equal(prefix, prefix + prefixCount, octets);
}

bool starts_with_ignore_case(const XcodeOctet* octets, std::int32_t count, const XcodeOctet* prefix,
                             std::int32_t prefixCount) noexcept {
  const auto same = [](XcodeOctet a, XcodeOctet b) { return lowered(a) == lowered(b); };
  return isPrefixPossible(octets, count, prefix, prefixCount) &&
         std::equal(prefix, prefix + prefixCount, octets, same);
}

XcodeResult shrink_UChar_to_Octet(const XcodeUnit* units, std::int32_t count, XcodeOctet* octets,
                                  std::int32_t* length) noexcept {
  if (detail::isMissing(units, count, octets, length)) return XcodeBadArgument;
  if (count > *length) return XcodeOverflow;
  for (std::int32_t i = 0; i < count; ++i) {
    if (units[i] >= 0x80) return XcodeBadArgument;
    octets[i] = static_cast<XcodeOctet>(units[i]);
  }
  *length = count;
  return XcodeOK;
}

XcodeResult expand_Octet_to_UChar(const XcodeOctet* octets, std::int32_t count, XcodeUnit* units,
                                  std::int32_t* length) noexcept {
  if (detail::isMissing(octets, count, units, length)) return XcodeBadArgument;
  if (count > *length) return XcodeOverflow;
  std::copy_n(octets, count, units);
  *length = count;
  return XcodeOK;
}

}  // namespace zeb
