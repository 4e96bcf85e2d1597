#include <ZEBUtilities/Text/NSString+ZEBInternational.h>
#include <ZEBUtilities/Text/UnitBlocksPrivate.h>
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

detail::UnitBlock areRightToLeft(detail::UnitBlock units) noexcept {
  return detail::isBetween(units, 0x0590, 0x08FF) | detail::isBetween(units, 0xFB1D, 0xFDFD) |
         detail::isBetween(units, 0xFE70, 0xFEFC);
}

constexpr char16_t arabicLetterMark = 0x061C;  // the control among the right-to-left characters

constexpr bool isDirectionControl(char16_t unit) noexcept {
  return unit == arabicLetterMark || unit == leftToRightMark || unit == rightToLeftMark ||
         (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
}

/// Also sets lanes of other rare characters.
detail::UnitBlock mayBeDirectionControls(detail::UnitBlock units) noexcept {
  return detail::isBetween(units, leftToRightMark, 0x2069) |
         detail::isUnit(units, arabicLetterMark);
}

bool shouldBeRenderedFromRight(std::u16string_view units) noexcept {
  detail::UnitBlock controls{};
  const auto test = [&](detail::UnitBlock block) {
    controls |= mayBeDirectionControls(block);
    return areRightToLeft(block);
  };
  auto rightToLeft = static_cast<std::ptrdiff_t>(detail::countUnits(units, test));
  auto counted = static_cast<std::ptrdiff_t>(units.size());
  if (rightToLeft > 0 && detail::anySet(controls)) {
    counted -= std::ranges::count_if(units, isDirectionControl);
    rightToLeft -= std::ranges::count(units, arabicLetterMark);
  }
  return rightToLeft > 0 &&
         static_cast<float>(rightToLeft) / static_cast<float>(counted) > maxShareFromLeft;
}

}  // namespace

// Text that is stored as ASCII has neither right-to-left nor direction control characters, and an
// empty `utf16View`.

bool zeb_containsRTLCharacters(const NSString& string) noexcept {
  std::u16string_view units = string.utf16View();
  for (constexpr std::size_t lengthAtOnce = 64; !units.empty();) {
    const std::u16string_view part = units.substr(0, lengthAtOnce);
    detail::UnitBlock found{};
    detail::forEachBlock(part, [&](detail::UnitBlock block) { found |= areRightToLeft(block); });
    if (detail::anySet(found)) return true;
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
  detail::UnitBlock controls{};
  detail::forEachBlock(string.utf16View(),
                       [&](detail::UnitBlock block) { controls |= mayBeDirectionControls(block); });
  if (!detail::anySet(controls)) return string.copy();
  std::u16string units = string.utf16();
  if (std::erase_if(units, isDirectionControl) == 0) return string.copy();
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
