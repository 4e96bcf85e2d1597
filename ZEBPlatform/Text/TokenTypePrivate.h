#pragma once

#include <ZEBPlatform/Text/CFStringTokenizer.h>
#include <unicode/ubrk.h>
#include <unicode/utf16.h>

#include <cstdint>
#include <string_view>

namespace zeb::detail {

/// The type of a token with this rule status. Its units count only in words of ideographs, which
/// have parts if they have several characters.
constexpr std::uint64_t tokenTypeOfStatus(std::int32_t status, std::u16string_view units) noexcept {
  if (status < UBRK_WORD_NONE_LIMIT) {
    return kCFStringTokenizerTokenNormal | kCFStringTokenizerTokenHasNonLettersMask;
  }
  if (status < UBRK_WORD_NUMBER_LIMIT) {
    return kCFStringTokenizerTokenNormal | kCFStringTokenizerTokenHasHasNumbersMask;
  }
  const bool isOneCharacter = units.size() < 2 || (units.size() == 2 && U16_IS_LEAD(units[0]));
  if (status >= UBRK_WORD_LETTER_LIMIT && !isOneCharacter) {
    return kCFStringTokenizerTokenNormal | kCFStringTokenizerTokenHasSubTokensMask;
  }
  return kCFStringTokenizerTokenNormal;
}

}  // namespace zeb::detail
