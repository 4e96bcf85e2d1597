#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/detail/StringBuilding.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace zeb::detail {

/// Calls `use` with the stored code units of the text and answers its result. The units are a
/// `std::string_view` of ASCII or a `std::u16string_view`, so that ASCII has a loop of its own that
/// reads bytes. Nil gives no units.
template <class Use>
auto withUnits(const NSString& string, const Use& use) {
  return string.isASCII() ? use(string.asciiView()) : use(string.utf16View());
}

/// A text of these units, which come from the stored form of another text and so need not be
/// examined again.
inline NSString textOfUnits(std::string_view units) {
  StringStorage* text = newStringStorage<char>(units.size());
  std::memcpy(contentOf<char>(text), units.data(), units.size());
  return adoptString(text);
}
inline NSString textOfUnits(std::u16string_view units) {
  // Most often one of the first units is outside ASCII. Else the part can be stored as bytes.
  if (std::none_of(units.begin(), units.end(), [](char16_t unit) { return unit >= 0x80; })) {
    return NSString(units);
  }
  StringStorage* text = newStringStorage<char16_t>(units.size());
  std::memcpy(contentOf<char16_t>(text), units.data(), units.size() * sizeof(char16_t));
  return adoptString(text);
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
