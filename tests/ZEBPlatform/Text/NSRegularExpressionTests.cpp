#include <ZEBPlatform/Text.h>

#include "Support/Support.h"

namespace zeb::test {

using namespace std::string_view_literals;

static Ref<NSRegularExpression> expression(const NSString& pattern, std::uint64_t options = 0) {
  return NSRegularExpression::regularExpressionWithPattern(pattern, options);
}

TEST(NSRegularExpression, FindsAndReplaces) {
  // clang-format off
  const struct {
    NSString pattern;
    std::uint64_t options, matching;
    NSString text;
    NSRange range;
    std::size_t matches;
    NSRange first;
    NSString replacement, result;
  } cases[] = {
      {"a+", 0, 0, "caaab a", {0, 7}, 2, {1, 3}, "<$0>", "c<aaa>b <a>"},
      {"(b)|(c)", 0, 0, "abc", {0, 3}, 2, {1, 1}, "[$1|$2|$7|\\$1|\\\\|$]",
       "a[b|||$1|\\|$][|c||$1|\\|$]"},
      {"(a)", 0, 0, "aa", {0, 2}, 2, {0, 1}, "$10", "a0a0"},
      {"X", NSRegularExpressionCaseInsensitive, 0, "axx", {2, 1}, 1, {2, 1}, "", "ax"},
      {"a.c", NSRegularExpressionIgnoreMetacharacters, 0, "abc a.c", {0, 7}, 1, {4, 3}, "_",
       "abc _"},
      {"^b", NSRegularExpressionAnchorsMatchLines, 0, "a\nb", {0, 3}, 1, {2, 1}, "c", "a\nc"},
      {"b", 0, NSMatchingAnchored, "abb", {0, 3}, 0, {NSNotFound, 0}, "c", "abb"},
      {"b", 0, NSMatchingAnchored, "abb", {1, 2}, 1, {1, 1}, "c", "acb"},
      {"^b", 0, 0, "ab", {1, 1}, 1, {1, 1}, "c", "ac"},
      {"^b", 0, NSMatchingWithoutAnchoringBounds, "ab", {1, 1}, 0, {NSNotFound, 0}, "c", "ab"},
      {"a(?=b)", 0, 0, "ab", {0, 1}, 0, {NSNotFound, 0}, "c", "ab"},
      {"a(?=b)", 0, NSMatchingWithTransparentBounds, "ab", {0, 1}, 1, {0, 1}, "c", "cb"},
      {"", 0, 0, "ab", {0, 2}, 3, {0, 0}, "-", "-a-b-"},
      {"x*", 0, 0, "", {0, 0}, 1, {0, 0}, "y", "y"},
      {".", 0, 0, u"\U0001F600\xD800\u00E9"sv, {0, 4}, 3, {0, 2}, "$0.",
       u"\U0001F600.\xD800.\u00E9."sv},
      {"a", 0, 0, nullptr, {0, 0}, 0, {NSNotFound, 0}, "b", nullptr}};
  // clang-format on
  for (const auto& [pattern, options, matching, text, range, matches, first, replacement, result] :
       cases) {
    const Ref<NSRegularExpression> regex = expression(pattern, options);
    ASSERT_TRUE(regex) << pattern;
    EXPECT_EQ(regex->numberOfMatchesInString(text, matching, range), matches) << pattern;
    EXPECT_EQ(regex->matchesInString(text, matching, range).size(), matches) << pattern;
    EXPECT_EQ(regex->rangeOfFirstMatchInString(text, matching, range), first) << pattern;
    EXPECT_EQ(regex->stringByReplacingMatchesInString(text, matching, range, replacement), result)
        << pattern;
  }
  const auto match = expression("(x)?(b)")->firstMatchInString("ab", 0, {0, 2});
  EXPECT_EQ(match->rangeAtIndex(1), (NSRange{NSNotFound, 0}));
  EXPECT_EQ(match->rangeAtIndex(2), match->range());
  EXPECT_EQ(raisedName([&] { match->rangeAtIndex(3); }), NSRangeException);
  EXPECT_EQ(raisedName([] { expression("a")->firstMatchInString("a", 0, {0, 2}); }),
            NSRangeException);

  std::string all;
  for (char byte = 1; byte > 0; ++byte) all += byte;
  const auto literal = expression(NSRegularExpression::escapedPatternForString(all));
  EXPECT_EQ(
      literal->stringByReplacingMatchesInString(
          NSString("<") + all, 0, {0, 128}, NSRegularExpression::escapedTemplateForString("\\1$1")),
      "<\\1$1");
}

TEST(NSRegularExpression, FaultsAreErrors) {
  for (const NSString& pattern :
       {NSString("a("), NSString("[b"), NSString(nullptr), NSString("*"),
        NSString(std::string(5'000, 'a')), NSString(std::string(4'000, '(')),
        NSString(std::string(4'000, '['))}) {
    NSError error;
    EXPECT_FALSE(NSRegularExpression::regularExpressionWithPattern(pattern, 0, &error));
    EXPECT_TRUE(error.code() == NSFormattingError && error.domain() == NSCocoaErrorDomain);
  }
  // Patterns that try exponentially many ways, and that remember every character.
  // Back-references, whose steps compare the whole text, are refused or stopped.
  for (const auto& [pattern, length] :
       {std::pair("(a+)+$b", 100'000), std::pair("((?:a|b)(?:a|b))*c", 100'000),
        std::pair("(a*)\\1b", 5'000), std::pair("(a*)(a*)\\2\\1b", 4'000)}) {
    const std::string text(static_cast<std::size_t>(length), 'a');
    NSError error;
    EXPECT_TRUE(expression(pattern)
                    ->stringByReplacingMatchesInString(text, 0, {0, text.size()}, "", &error)
                    .isNil());
    EXPECT_EQ(error.code(), NSFormattingError) << pattern;
  }
  NSError error;
  std::string longTemplate;
  while (longTemplate.size() < 200'000) longTemplate += "$0";
  EXPECT_TRUE(expression("a+")
                  ->stringByReplacingMatchesInString(std::string(2'000, 'a'), 0, {0, 2'000},
                                                     longTemplate, &error)
                  .isNil());
  EXPECT_EQ(error.code(), NSFormattingError);
}

TEST(NSRegularExpression, ThreadsShareAnExpression) {
  const Ref<NSRegularExpression> words = expression("\\w+");
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 12; ++thread) {
    threads.emplace_back([&] {
      for (int round = 0; round < 50; ++round) {
        std::size_t nested = 0;
        words->enumerateMatchesInString("a bc d", 0, {0, 6}, [&](const auto& result) {
          nested += words->numberOfMatchesInString("x y", 0, {0, result->range().length});
          return true;
        });
        EXPECT_EQ(nested, 3u);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace zeb::test
