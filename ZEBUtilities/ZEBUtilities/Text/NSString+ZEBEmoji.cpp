#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Text/UnicodeProperties.h>
#include <ZEBPlatform/Text/detail/ComposedSequences.h>
#include <ZEBUtilities/Text/NSString+ZEBEmoji.h>

#include <string_view>

namespace zeb {

namespace {

constexpr char32_t textPresentation = 0xFE0E;
constexpr char32_t enclosingKeycap = 0x20E3;

constexpr bool isRegionalIndicator(char32_t codePoint) noexcept {
  return codePoint >= 0x1F1E6 && codePoint <= 0x1F1FF;
}

constexpr bool isKeycapBase(char32_t codePoint) noexcept {
  return codePoint == U'#' || codePoint == U'*' || (codePoint >= U'0' && codePoint <= U'9');
}

/// Surrogates are code points only if they are unpaired.
constexpr bool isUnpaired(char32_t codePoint) noexcept {
  return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}

ZEBEmojiCharacterData characterData(std::u16string_view units) noexcept {
  ZEBEmojiCharacterData data;
  if (units.empty()) return data;
  std::size_t index = 0;
  const char32_t first = detail::nextScalar(units, index);
  if (isUnpaired(first)) return {0, ZEBEmojiCharacterData::malformedFlag};
  data.codePoints = first;
  for (bool isSecond = true; index < units.size(); isSecond = false) {
    const char32_t codePoint = detail::nextScalar(units, index);
    if (isUnpaired(codePoint)) {
      data.flags |= ZEBEmojiCharacterData::malformedFlag;
      break;
    }
    if (isSecond) data.codePoints |= std::uint64_t{codePoint} << 32;
    if (codePoint == enclosingKeycap) data.flags |= ZEBEmojiCharacterData::keycapFlag;
  }
  return data;
}

bool isEmoji(const ZEBEmojiCharacterData& data) noexcept {
  if (data.isMalformed() || data.second() == textPresentation) return false;
  if (isRegionalIndicator(data.first())) return isRegionalIndicator(data.second());
  return isKeycapBase(data.first()) ? data.isKeycap() : unicodeHasEmojiProperty(data.first());
}

/// Whether a sequence that begins with this unit, and is not stored as ASCII, may be an emoji.
constexpr bool mayBeginEmoji(char16_t unit) noexcept { return unit >= 0x80 || isKeycapBase(unit); }

}  // namespace

bool zeb_containsOnlyEmoji(const NSString& string) {
  if (string.empty()) return !string.isNil();
  const std::u16string_view units = string.utf16View();
  // Text that is stored as ASCII has no keycaps.
  if (units.empty() || !mayBeginEmoji(units.front())) return false;
  detail::ComposedSequences sequences(units);
  for (std::size_t start = 0; start < units.size();) {
    const std::size_t end = sequences.endFrom(start);
    if (!isEmoji(characterData(units.substr(start, end - start)))) return false;
    start = end;
  }
  return true;
}

ZEBEmojiCharacterData _zeb_emojiCharacterData(const NSString& string) noexcept {
  if (!string.isASCII()) return characterData(string.utf16View());
  const std::string_view ascii = string.asciiView();
  ZEBEmojiCharacterData data;
  if (!ascii.empty()) data.codePoints = static_cast<unsigned char>(ascii[0]);
  if (ascii.size() > 1)
    data.codePoints |= std::uint64_t{static_cast<unsigned char>(ascii[1])} << 32;
  return data;
}

}  // namespace zeb
