#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Text/NSCharacterSet.h>
#include <ZEBPlatform/Text/detail/StringUnits.h>
#include <ZEBUtilities/Text/NSString+ZEBAdditions.h>

#include <algorithm>

namespace zeb {

namespace {

constexpr int notHexDigit = -1;

constexpr int hexDigitValue(char16_t unit) noexcept {
  if (unit >= u'0' && unit <= u'9') return unit - u'0';
  if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
  if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
  return notHexDigit;
}

}  // namespace

bool zeb_containsOnlyNumbers(const NSString& string) {
  if (string.empty()) return false;
  if (string.isASCII()) {
    const std::string_view bytes = string.asciiView();
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char byte) { return byte >= '0' && byte <= '9'; });
  }
  const NSCharacterSet& digits = *NSCharacterSet::decimalDigitCharacterSet();
  const std::u16string_view units = string.utf16View();
  for (std::size_t index = 0; index < units.size();) {
    if (!digits.longCharacterIsMember(detail::nextScalar(units, index))) return false;
  }
  return true;
}

bool zeb_containsOnlyHexNumbers(const NSString& string) {
  return !string.empty() && detail::withUnits(string, [](auto units) {
    return std::all_of(units.begin(), units.end(),
                       [](char16_t unit) { return hexDigitValue(unit) != notHexDigit; });
  });
}

std::uint64_t zeb_hexIntegerValue(const NSString& string) {
  return detail::withUnits(string, [](auto units) {
    std::uint64_t value = 0;
    for (const auto unit : units) {
      const int digit = hexDigitValue(static_cast<char16_t>(unit));
      if (digit == notHexDigit) break;
      value = value * 16 + static_cast<std::uint64_t>(digit);
    }
    return value;
  });
}

}  // namespace zeb
