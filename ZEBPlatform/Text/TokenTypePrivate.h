#pragma once

#include <ZEBPlatform/Text/CFStringTokenizer.h>
#include <unicode/ubrk.h>

namespace zeb::detail {

/// The type of a token with this rule status; `hasSeveralCharacters` of a word of ideographs.
constexpr std::uint64_t tokenTypeOfStatus(std::int32_t status, bool hasSeveralCharacters) noexcept {
  if (status < UBRK_WORD_NONE_LIMIT) {
    return kCFStringTokenizerTokenNormal | kCFStringTokenizerTokenHasNonLettersMask;
  }
  if (status < UBRK_WORD_NUMBER_LIMIT) {
    return kCFStringTokenizerTokenNormal | kCFStringTokenizerTokenHasHasNumbersMask;
  }
  if (status >= UBRK_WORD_LETTER_LIMIT && hasSeveralCharacters) {
    return kCFStringTokenizerTokenNormal | kCFStringTokenizerTokenHasSubTokensMask;
  }
  return kCFStringTokenizerTokenNormal;
}

}  // namespace zeb::detail
