#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Text/ICUTextPrivate.h>
#include <unicode/unistr.h>

#include <cstdint>

namespace zeb::detail {

/// A copy; empty for nil, and for text that is longer than ICU can count.
inline icu::UnicodeString unicodeString(const NSString& string) {
  if (!fitsICU(string.length())) return {};
  if (string.isASCII()) {
    const std::string_view text = string.asciiView();
    return icu::UnicodeString(text.data(), static_cast<std::int32_t>(text.size()), US_INV);
  }
  const std::u16string_view units = string.utf16View();
  return icu::UnicodeString(units.data(), static_cast<std::int32_t>(units.size()));
}

inline NSString nsString(const icu::UnicodeString& text) {
  return NSString(std::u16string_view(text.getBuffer(), static_cast<std::size_t>(text.length())));
}

}  // namespace zeb::detail
