#include <ZEBUtilities/Text/NSString+ZEBInternational.h>
#include <ZEBUtilities/Text/ZEBInternational.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace zeb {

namespace {

constexpr char16_t leftToRightMark = 0x200E;
constexpr char16_t rightToLeftMark = 0x200F;
/// A status text was at most this long.
constexpr std::size_t maxStatusLength = 140;
/// The share of right-to-left characters above which a text begins at the right.
constexpr float maxShareFromLeft = 0.3f;

// The tests of units have no branches, so that compilers make loops over vectors of them.

constexpr bool isBetween(char16_t unit, char16_t first, char16_t last) noexcept {
  return static_cast<std::uint16_t>(unit - first) <= last - first;
}

constexpr bool isRightToLeft(char16_t unit) noexcept {
  return isBetween(unit, 0x0590, 0x08FF) | isBetween(unit, 0xFB1D, 0xFDFD) |
         isBetween(unit, 0xFE70, 0xFEFC);
}

constexpr bool isDirectionControl(char16_t unit) noexcept {
  return (unit == 0x061C) | isBetween(unit, leftToRightMark, rightToLeftMark) |
         isBetween(unit, 0x202A, 0x202E) | isBetween(unit, 0x2066, 0x2069);
}

/// The number of units that pass the test. Counts in blocks whose length the compiler knows and
/// whose counts fit into 16 bits.
template <class Test>
std::size_t countUnits(std::u16string_view units, Test test) noexcept {
  constexpr std::size_t blockLength = 64;
  std::size_t count = 0;
  for (; units.size() >= blockLength; units.remove_prefix(blockLength)) {
    std::uint16_t inBlock = 0;
    for (std::size_t i = 0; i < blockLength; ++i) {
      inBlock = static_cast<std::uint16_t>(inBlock + test(units[i]));
    }
    count += inBlock;
  }
  return count + static_cast<std::size_t>(std::count_if(units.begin(), units.end(), test));
}

bool shouldBeRenderedFromRight(std::u16string_view units) noexcept {
  const std::size_t rightToLeft = countUnits(
      units, [](char16_t unit) { return isRightToLeft(unit) & !isDirectionControl(unit); });
  if (rightToLeft == 0) return false;
  const std::size_t counted = units.size() - countUnits(units, isDirectionControl);
  return static_cast<float>(rightToLeft) / static_cast<float>(counted) > maxShareFromLeft;
}

}  // namespace

// Text that is stored as ASCII has neither right-to-left nor direction control characters, and an
// empty `utf16View`.

bool zeb_containsRTLCharacters(const NSString& string) noexcept {
  std::u16string_view units = string.utf16View();
  for (constexpr std::size_t lengthAtOnce = 1024; !units.empty();) {
    const std::u16string_view part = units.substr(0, lengthAtOnce);
    if (countUnits(part, isRightToLeft) > 0) return true;
    units.remove_prefix(part.size());
  }
  return false;
}

bool zeb_plainTextShouldBeRenderedFromRight(const NSString& string) noexcept {
  return shouldBeRenderedFromRight(string.utf16View());
}

bool zeb_statusTextShouldBeRenderedFromRight(const NSString& string) noexcept {
  return shouldBeRenderedFromRight(string.utf16View().substr(0, maxStatusLength));
}

NSString zeb_stringByRemovingAllDirectionControlCharacters(const NSString& string) {
  if (string.empty()) return string;
  if (countUnits(string.utf16View(), isDirectionControl) == 0) return string.copy();
  std::u16string units = string.utf16();
  std::erase_if(units, isDirectionControl);
  return NSString(std::u16string_view(units));
}

NSString zeb_labelTextByAddingDirectionControlCharacter(const NSString& string) {
  if (string.isNil()) return nullptr;
  const char16_t mark = ZEBIsUsingRTLLanguage() ? rightToLeftMark : leftToRightMark;
  return NSString::stringWithFormat("%C%@", mark, string);
}

bool zeb_labelTextShouldBeRenderedFromRight(const NSString& string) noexcept {
  return string.utf16View().starts_with(rightToLeftMark);
}

}  // namespace zeb
