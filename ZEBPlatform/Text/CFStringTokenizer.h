#pragma once

#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>
#include <ZEBPlatform/Text/NSLocale.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace zeb {

/// What the tokens of a text are.
enum CFStringTokenizerUnit : std::uint64_t {
  /// Words and numbers; what is between them belongs to no token.
  kCFStringTokenizerUnitWord = 0,
  /// Everything between two word boundaries of Unicode (UAX #29), so that each code unit belongs to
  /// a token.
  kCFStringTokenizerUnitWordBoundary = 4,
};

/// What a token consists of; bits that are combined.
enum CFStringTokenizerTokenType : std::uint64_t {
  /// There is no token.
  kCFStringTokenizerTokenNone = 0,
  kCFStringTokenizerTokenNormal = 1,
  /// A word of several ideographs or kana, each of which can be a word, too.
  kCFStringTokenizerTokenHasSubTokensMask = 2,
  /// A number, or a word that ends with digits.
  kCFStringTokenizerTokenHasHasNumbersMask = 8,
  /// Spaces, punctuation, symbols.
  kCFStringTokenizerTokenHasNonLettersMask = 16,
};

/// Splits a text into tokens. The boundaries and the types of tokens are those that ICU's word
/// iterator gives; dictionaries find the words of scripts without spaces, such as Thai and Chinese.
/// A tokenizer belongs to one thread at a time.
class CFStringTokenizer : public NSObject {
 public:
  std::string className() const override { return "CFStringTokenizer"; }

  /// For the functions below only.
  CFStringTokenizer(CFStringTokenizerUnit unit, const char* icuLocale);
  void setString(const NSString& string, NSRange range);
  std::uint64_t goToTokenAtIndex(std::size_t index);
  std::uint64_t advanceToNextToken();
  NSRange currentTokenRange() const noexcept { return current_; }

 protected:
  ~CFStringTokenizer() override;

 private:
  /// Answers the type of the token that ends at the iterator's boundary; places are relative to the
  /// range.
  std::uint64_t setCurrentToken(std::size_t begin, std::size_t end, std::int32_t status);

  CFStringTokenizerUnit unit_;
  void* iterator_;  ///< ICU's; null without its data
  NSString string_;
  std::u16string widened_;  ///< the range, if the text is stored as bytes
  NSRange range_;
  NSRange current_{NSNotFound, 0};
  std::size_t next_ = 0;  ///< where the next token begins, relative to the range
};

/// A tokenizer of the range of the text. Without a tokenizer the other functions do nothing and
/// find no token. Ranges of more than 2^31 - 1 code units have no tokens. A nil locale means the
/// rules of no particular language. Throws NSException (NSRangeException) if the range reaches past
/// the end.
Ref<CFStringTokenizer> CFStringTokenizerCreate(const NSString& string, NSRange range,
                                               CFStringTokenizerUnit unit,
                                               const Ref<NSLocale>& locale = nullptr);

/// Begins anew with another text, which the tokenizer keeps. Throws NSException (NSRangeException)
/// if the range reaches past the end.
void CFStringTokenizerSetString(const Ref<CFStringTokenizer>& tokenizer, const NSString& string,
                                NSRange range);

/// Makes the token at this index of the text the current one and answers its type. The end of the
/// range counts as an index of the last token, so that a cursor behind the last word is at that
/// word. kCFStringTokenizerTokenNone if there is no token.
std::uint64_t CFStringTokenizerGoToTokenAtIndex(const Ref<CFStringTokenizer>& tokenizer,
                                                std::size_t index);

/// Makes the token after the current one the current one, or the first one if there is no current
/// one yet, and answers its type; kCFStringTokenizerTokenNone after the last one.
std::uint64_t CFStringTokenizerAdvanceToNextToken(const Ref<CFStringTokenizer>& tokenizer);

/// {NSNotFound, 0} if there is no current token.
NSRange CFStringTokenizerGetCurrentTokenRange(const Ref<CFStringTokenizer>& tokenizer);

}  // namespace zeb
