#include <ZEBPlatform/Text.h>
#include <ZEBPlatform/Text/detail/WordToken.h>

#include "Support/Support.h"

namespace zeb::test {

using namespace std::string_view_literals;

TEST(CFStringTokenizer, TokensAndTheirTypes) {
  const NSString text(u"Don't go 42x7 \u4E2D\u6587 \u0E20\u0E32\u0E29\u0E32\u0E44\u0E17\u0E22!"sv);
  struct Token {
    NSString text;
    std::uint64_t type;
  };
  const Token expected[] = {{"Don't", 1},
                            {" ", 17},
                            {"go", 1},
                            {" ", 17},
                            {"42x7", 9},
                            {" ", 17},
                            {u"\u4E2D\u6587"sv, 3},
                            {" ", 17},
                            {u"\u0E20\u0E32\u0E29\u0E32"sv, 1},
                            {u"\u0E44\u0E17\u0E22"sv, 1},
                            {"!", 17}};
  const NSRange whole{0, text.length()};
  for (const CFStringTokenizerUnit unit :
       {kCFStringTokenizerUnitWord, kCFStringTokenizerUnitWordBoundary}) {
    const auto tokenizer = CFStringTokenizerCreate(text, whole, unit);
    EXPECT_EQ(CFStringTokenizerGetCurrentTokenRange(tokenizer), (NSRange{NSNotFound, 0}));
    std::size_t place = 0;
    for (const Token& token : expected) {
      const NSRange range{place, token.text.length()};
      place += token.text.length();
      const bool isToken = unit == kCFStringTokenizerUnitWordBoundary || !(token.type & 16);
      if (isToken) {
        EXPECT_EQ(CFStringTokenizerAdvanceToNextToken(tokenizer), token.type) << token.text;
        EXPECT_EQ(CFStringTokenizerGetCurrentTokenRange(tokenizer), range) << token.text;
      }
      const auto other = CFStringTokenizerCreate(text, whole, unit);
      EXPECT_EQ(CFStringTokenizerGoToTokenAtIndex(other, place - 1), isToken ? token.type : 0);
      EXPECT_EQ(CFStringTokenizerGetCurrentTokenRange(other),
                isToken ? range : (NSRange{NSNotFound, 0}));
    }
    EXPECT_EQ(CFStringTokenizerAdvanceToNextToken(tokenizer), kCFStringTokenizerTokenNone);

    CFStringTokenizerSetString(tokenizer, "one two", {2, 4});
    EXPECT_EQ(CFStringTokenizerGoToTokenAtIndex(tokenizer, 1), kCFStringTokenizerTokenNone);
    EXPECT_EQ(CFStringTokenizerGoToTokenAtIndex(tokenizer, 7), kCFStringTokenizerTokenNone);
    EXPECT_EQ(CFStringTokenizerGoToTokenAtIndex(tokenizer, 6), kCFStringTokenizerTokenNormal);
    EXPECT_EQ(CFStringTokenizerGetCurrentTokenRange(tokenizer), (NSRange{4, 2}));
    for (const std::size_t index : {1u, 2u, 3u}) {  // both halves of the pair and the end
      CFStringTokenizerSetString(tokenizer, u"a\U00020000"sv, {0, 3});
      EXPECT_EQ(CFStringTokenizerGoToTokenAtIndex(tokenizer, index), kCFStringTokenizerTokenNormal);
      EXPECT_EQ(CFStringTokenizerGetCurrentTokenRange(tokenizer), (NSRange{1, 2})) << index;
    }
    CFStringTokenizerSetString(tokenizer, nullptr, {0, 0});
    EXPECT_EQ(CFStringTokenizerGoToTokenAtIndex(tokenizer, 0), kCFStringTokenizerTokenNone);
    EXPECT_EQ(raisedName([&] { CFStringTokenizerSetString(tokenizer, "a", {1, SIZE_MAX}); }),
              NSRangeException);
  }
}

// The rules are written twice: here for speed, and in ICU.
TEST(CFStringTokenizer, WordsByRulesAreTheWordsOfICU) {
  constexpr std::u32string_view alphabet =
      U"aZ\u00E9\u05D0\u05D1\u0627\u0661"
      U"09__''\"\".,,:;\u00B7@ \u3000\r\n\u2028\u0301\u00AD"
      U"\u200D\u200D\u200F\uFE0F\u2764\U0001F600\U0001F1E6\U0001F1E7\u24C2\u4E2D\u3042\u30A2\u30FC"
      U"\uD55C\u0E01\u0E33\U00010400\U0001D7CE\xD83D\xDE00\u202F\u2019\u1160";
  std::mt19937 random(11);
  for (int round = 0; round < 20'000; ++round) {
    // Texts of a few kinds of characters have long tokens.
    const std::size_t first = random() % alphabet.size();
    const std::size_t kinds = 2 + random() % (round % 2 ? 4 : alphabet.size());
    std::u16string text;
    for (std::size_t count = 1 + random() % 20; count > 0; --count) {
      char32_t character = alphabet[(first + random() % kinds) % alphabet.size()];
      if (round % 3 == 0 && random() % 4 == 0) character = static_cast<char32_t>(random() % 0x3000);
      text += character < 0x10000
                  ? std::u16string(1, static_cast<char16_t>(character))
                  : std::u16string{static_cast<char16_t>(0xD7C0 + (character >> 10)),
                                   static_cast<char16_t>(0xDC00 + (character & 0x3FF))};
    }
    const NSString string{std::u16string_view(text)};
    for (std::size_t index = 0; index <= text.size(); ++index) {
      const auto own = detail::wordTokenAtIndex(string, {0, text.size()}, index);
      const auto icu = detail::wordTokenAtIndexByICU(string, {0, text.size()}, index);
      ASSERT_TRUE(own.range == icu.range && own.type == icu.type)
          << NSString::stringWithFormat("%@: %zu, not %zu+%zu %llu but %zu+%zu %llu",
                                        NSString(string), index, icu.range.location,
                                        icu.range.length, icu.type, own.range.location,
                                        own.range.length, own.type)
          << ::testing::PrintToString(text);
    }
  }
}

}  // namespace zeb::test
