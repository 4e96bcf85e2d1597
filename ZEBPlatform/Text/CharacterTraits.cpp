#include <ZEBPlatform/Text/UnicodeProperties.h>
#include <ZEBPlatform/Text/detail/CharacterTraits.h>
#include <unicode/uchar.h>

namespace zeb {

namespace detail {

namespace {

bool hasProperty(char32_t codePoint, UProperty property) noexcept {
  return u_hasBinaryProperty(static_cast<UChar32>(codePoint), property);
}

ComposingClass classFromProperties(char32_t codePoint) noexcept {
  // Scripts in which letters join in ways that differ between versions of Unicode.
  if (codePoint >= 0x0900 && codePoint < 0x2000) return ComposingClass::unknown;
  switch (u_getIntPropertyValue(static_cast<UChar32>(codePoint), UCHAR_GRAPHEME_CLUSTER_BREAK)) {
    case U_GCB_OTHER:
      return hasProperty(codePoint, UCHAR_EXTENDED_PICTOGRAPHIC) ? ComposingClass::pictograph
                                                                 : ComposingClass::plain;
    case U_GCB_CONTROL:
      return ComposingClass::control;
    case U_GCB_CR:
      return ComposingClass::carriageReturn;
    case U_GCB_LF:
      return ComposingClass::lineFeed;
    case U_GCB_EXTEND:
      return ComposingClass::extending;
    case U_GCB_ZWJ:
      return ComposingClass::joiner;
    case U_GCB_REGIONAL_INDICATOR:
      return ComposingClass::regionalIndicator;
    default:
      return ComposingClass::unknown;
  }
}

template <std::size_t count>
void fill(std::array<std::uint8_t, count>& traits, char32_t first, std::uint8_t emojiFlag) {
  for (std::uint8_t& entry : traits) {
    entry = static_cast<std::uint8_t>(classFromProperties(first));
    if (hasProperty(first, UCHAR_EMOJI)) entry |= emojiFlag;
    ++first;
  }
}

}  // namespace

const CharacterTraits& CharacterTraits::shared() {
  static const CharacterTraits traits;
  return traits;
}

CharacterTraits::CharacterTraits() {
  fill(low_, 0, emojiFlag);
  fill(high_, firstHigh, emojiFlag);
}

ComposingClass CharacterTraits::classElsewhere(char32_t codePoint) noexcept {
  const auto isIn = [&](char32_t first, char32_t last) {
    return codePoint >= first && codePoint <= last;
  };
  // Ideographs, and the syllables of Hangul, which only its single letters (unknown) continue.
  if (isIn(0x3400, 0x9FFF) || isIn(0xAC00, 0xD7A3)) return ComposingClass::plain;
  if (isIn(0xD800, 0xDFFF)) return ComposingClass::plain;
  // The tags that spell the flags of regions.
  if (isIn(0xE0020, 0xE007F)) return ComposingClass::extending;
  return ComposingClass::unknown;
}

bool CharacterTraits::isEmojiElsewhere(char32_t codePoint) noexcept {
  return hasProperty(codePoint, UCHAR_EMOJI);
}

}  // namespace detail

bool unicodeHasEmojiProperty(char32_t codePoint) noexcept {
  return detail::CharacterTraits::shared().isEmoji(codePoint);
}

bool unicodeChangesWhenUppercased(char32_t codePoint) noexcept {
  return u_hasBinaryProperty(static_cast<UChar32>(codePoint), UCHAR_CHANGES_WHEN_UPPERCASED);
}

int unicodeDecimalDigitValue(char32_t codePoint) noexcept {
  return u_charDigitValue(static_cast<UChar32>(codePoint));
}

}  // namespace zeb
