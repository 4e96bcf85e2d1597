#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>

#include <cstddef>
#include <string_view>

namespace zeb::detail {

/// Calls `use` with the stored code units of the text and answers its result. The units are a
/// `std::string_view` of ASCII or a `std::u16string_view`, so that ASCII has a loop of its own that
/// reads bytes. Nil gives no units.
template <class Use>
auto withUnits(const NSString& string, const Use& use) {
  return string.isASCII() ? use(string.asciiView()) : use(string.utf16View());
}

/// The character at `index`, which may be an unpaired surrogate; moves `index` past it.
inline char32_t nextCharacter(std::string_view units, std::size_t& index) noexcept {
  return static_cast<unsigned char>(units[index++]);
}
inline char32_t nextCharacter(std::u16string_view units, std::size_t& index) noexcept {
  return nextScalar(units, index);
}

/// The character before `index`; moves `index` to its beginning.
inline char32_t previousCharacter(std::string_view units, std::size_t& index) noexcept {
  return static_cast<unsigned char>(units[--index]);
}
inline char32_t previousCharacter(std::u16string_view units, std::size_t& index) noexcept {
  const char16_t unit = units[--index];
  if (isLowSurrogate(unit) && index > 0 && isHighSurrogate(units[index - 1])) {
    return scalarOfPair(units[--index], unit);
  }
  return unit;
}

}  // namespace zeb::detail
