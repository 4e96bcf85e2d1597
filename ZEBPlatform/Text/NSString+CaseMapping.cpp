#include <ZEBPlatform/Text/ICUTextPrivate.h>
#include <ZEBPlatform/Text/NSString+CaseMapping.h>
#include <ZEBPlatform/Text/WordIteratorPrivate.h>
#include <unicode/ustring.h>

#include <algorithm>

namespace zeb {

namespace {

const char* nameOf(const Ref<NSLocale>& locale) { return locale ? locale->icuName() : ""; }

/// `map(buffer, capacity, units, length, status)` is one of ICU's mappings.
template <class Map>
NSString mapped(const NSString& string, const Map& map) {
  const std::u16string units = string.utf16();
  if (units.empty() || !detail::fitsICU(units.size())) return string.copy();
  const auto result = detail::icuText(
      units.size() + 16, [&](char16_t* buffer, std::int32_t capacity, UErrorCode* status) {
        return map(buffer, capacity, units.data(), static_cast<std::int32_t>(units.size()), status);
      });
  if (!result || *result == units) return string.copy();
  return NSString(std::u16string_view(*result));
}

/// Shifts the case of the ASCII letters from `first` up to `last`.
NSString mappedASCII(const NSString& string, char first, char last) {
  const auto isMapped = [=](char byte) { return byte >= first && byte <= last; };
  const std::string_view bytes = string.asciiView();
  if (std::none_of(bytes.begin(), bytes.end(), isMapped)) return string.copy();
  std::string result(bytes);
  for (char& byte : result) {
    if (isMapped(byte)) byte ^= 'a' ^ 'A';
  }
  return NSString(result);
}

}  // namespace

NSString uppercaseString(const NSString& string) {
  return uppercaseStringWithLocale(string, nullptr);
}

NSString uppercaseStringWithLocale(const NSString& string, const Ref<NSLocale>& locale) {
  if (!locale && string.isASCII()) return mappedASCII(string, 'a', 'z');
  return mapped(string, [&](char16_t* buffer, std::int32_t capacity, const char16_t* units,
                            std::int32_t length, UErrorCode* status) {
    return u_strToUpper(buffer, capacity, units, length, nameOf(locale), status);
  });
}

NSString lowercaseString(const NSString& string) {
  return lowercaseStringWithLocale(string, nullptr);
}

NSString lowercaseStringWithLocale(const NSString& string, const Ref<NSLocale>& locale) {
  if (!locale && string.isASCII()) return mappedASCII(string, 'A', 'Z');
  return mapped(string, [&](char16_t* buffer, std::int32_t capacity, const char16_t* units,
                            std::int32_t length, UErrorCode* status) {
    return u_strToLower(buffer, capacity, units, length, nameOf(locale), status);
  });
}

NSString capitalizedString(const NSString& string) {
  return capitalizedStringWithLocale(string, nullptr);
}

NSString capitalizedStringWithLocale(const NSString& string, const Ref<NSLocale>& locale) {
  const detail::WordIterator words;
  return mapped(string,
                [&](char16_t* buffer, std::int32_t capacity, const char16_t* units,
                    std::int32_t length, UErrorCode* status) -> std::int32_t {
                  if (!words.get()) return -1;
                  return u_strToTitle(buffer, capacity, units, length, words.get(), nameOf(locale),
                                      status);
                });
}

}  // namespace zeb
