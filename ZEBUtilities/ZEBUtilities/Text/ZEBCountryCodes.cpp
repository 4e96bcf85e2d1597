#include <ZEBUtilities/Text/ZEBCountryCodes.h>

namespace zeb {

namespace {

template <class Enumeration, std::size_t count>
std::optional<Enumeration> caseWithRawValue(
    const std::array<std::pair<Enumeration, const char*>, count>& cases, const NSString& rawValue) {
  const NSString narrow = rawValue.copy();  // a mutable text may hold ASCII in 16-bit units
  for (const auto& [enumerator, text] : cases) {
    if (narrow.asciiView() == text) return enumerator;
  }
  return std::nullopt;
}

}  // namespace

std::optional<ISOCountryCode> ISOCountryCodeWithRawValue(const NSString& rawValue) {
  return caseWithRawValue(ISOCountryCodeCases, rawValue);
}

std::optional<ISOLanguageCode> ISOLanguageCodeWithRawValue(const NSString& rawValue) {
  return caseWithRawValue(ISOLanguageCodeCases, rawValue);
}

}  // namespace zeb
