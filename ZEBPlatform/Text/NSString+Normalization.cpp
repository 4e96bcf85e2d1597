#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Text/FoldedTextPrivate.h>
#include <ZEBPlatform/Text/ICUTextPrivate.h>
#include <ZEBPlatform/Text/NSString+Normalization.h>
#include <unicode/unorm2.h>

namespace zeb {

namespace {

/// ICU sorts the combining marks of a character by insertion. Longer rows than this one are sorted
/// here first, so that no text takes quadratic time.
constexpr std::size_t maxMarksForICU = 128;

bool hasLongRowOfMarks(std::u16string_view units, const UNormalizer2* normalizer) {
  std::size_t marks = 0;
  for (std::size_t index = 0; index < units.size();) {
    const auto codePoint = static_cast<UChar32>(detail::nextScalar(units, index));
    marks = unorm2_hasBoundaryBefore(normalizer, codePoint) ? 0 : marks + 1;
    if (marks > maxMarksForICU) return true;
  }
  return false;
}

std::u16string decomposed(std::u16string_view units) {
  std::u16string result;
  detail::FoldedText text(units, {});
  for (detail::FoldedUnit unit; text.next(unit);) result += unit.unit;
  return result;
}

NSString normalized(const NSString& string, const UNormalizer2* (*instance)(UErrorCode* status)) {
  std::u16string_view units = string.utf16View();
  UErrorCode status = U_ZERO_ERROR;
  const UNormalizer2* normalizer = instance(&status);
  // ASCII is in all forms.
  if (units.empty() || !detail::fitsICU(units.size()) || U_FAILURE(status)) return string.copy();
  const std::int32_t normalLength = unorm2_spanQuickCheckYes(
      normalizer, units.data(), static_cast<std::int32_t>(units.size()), &status);
  if (U_FAILURE(status) || static_cast<std::size_t>(normalLength) == units.size()) {
    return string.copy();
  }
  std::u16string sorted;
  if (hasLongRowOfMarks(units, normalizer)) {
    sorted = decomposed(units);
    units = sorted;
    if (!detail::fitsICU(units.size())) return string.copy();
  }
  const auto result = detail::icuText(
      units.size() + units.size() / 4 + 16,
      [&](char16_t* buffer, std::int32_t capacity, UErrorCode* writing) {
        return unorm2_normalize(normalizer, units.data(), static_cast<std::int32_t>(units.size()),
                                buffer, capacity, writing);
      });
  if (!result || *result == string.utf16View()) return string.copy();
  return NSString(std::u16string_view(*result));
}

}  // namespace

NSString precomposedStringWithCanonicalMapping(const NSString& string) {
  return normalized(string, unorm2_getNFCInstance);
}

NSString precomposedStringWithCompatibilityMapping(const NSString& string) {
  return normalized(string, unorm2_getNFKCInstance);
}

NSString decomposedStringWithCanonicalMapping(const NSString& string) {
  return normalized(string, unorm2_getNFDInstance);
}

NSString decomposedStringWithCompatibilityMapping(const NSString& string) {
  return normalized(string, unorm2_getNFKDInstance);
}

}  // namespace zeb
