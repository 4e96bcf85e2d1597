#include <Contacts/NormalizedPhoneNumber.h>
#include <ZEBPlatform/Text/NSCharacterSet.h>
#include <ZEBPlatform/Text/UnicodeProperties.h>
#include <ZEBPlatform/Text/detail/StringUnits.h>

#include <cstddef>
#include <string>

namespace zeb {

namespace {

bool isPlus(char32_t character) noexcept {
  constexpr char32_t fullwidthPlus = 0xFF0B;
  return character == '+' || character == fullwidthPlus;
}

bool beginsExtension(char32_t character) noexcept {
  return character == ',' || character == ';' || character == '#' ||
         NSCharacterSet::letterCharacterSet()->longCharacterIsMember(character);
}

template <class Units>
std::string normalized(Units units) {
  constexpr typename Units::value_type trunkPrefix[] = {'(', '0', ')', 0};
  std::string digits;
  bool hasPlus = false;
  for (std::size_t index = 0; index < units.size();) {
    if (hasPlus && units.substr(index).starts_with(trunkPrefix)) {
      index += 3;
      continue;
    }
    const char32_t character = detail::nextCharacter(units, index);
    if (const int digit = unicodeDecimalDigitValue(character); digit >= 0) {
      digits += static_cast<char>('0' + digit);
    } else if (digits.empty()) {
      hasPlus |= isPlus(character);
    } else if (beginsExtension(character)) {
      break;
    }
  }
  return hasPlus && !digits.empty() ? '+' + digits : digits;
}

}  // namespace

NSString normalizedPhoneNumber(const NSString& number) {
  return detail::withUnits(number, [](auto units) { return normalized(units); });
}

}  // namespace zeb
