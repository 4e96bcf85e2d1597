#include <ZEBPlatform/Text.h>

#include <random>
#include <set>

#include "Support/Support.h"

namespace zeb::test {

TEST(NSCharacterSet, WellKnownSetsFollowTheGeneralCategories) {
  using Set = NSCharacterSet;
  // clang-format off
  const struct { const Ref<Set>& set; std::u32string_view members, others; } cases[] = {
      {Set::whitespaceCharacterSet(), U" \t\u00A0\u1680\u2009\u202F\u3000",
       U"\n\r\x85\u2028a\u200B"},
      {Set::newlineCharacterSet(), U"\n\v\f\r\x85\u2028\u2029", U" \t\u00A0\x1F"},
      {Set::whitespaceAndNewlineCharacterSet(), U" \t\n\v\f\r\x85\u2028\u2029\u3000",
       U"\x08\x0E\u200B\uFEFFx"},
      {Set::decimalDigitCharacterSet(), U"09\u0660\u0969\uFF11\U0001D7CE",
       U"aF\u00B2\u2167\U00010107"},
      {Set::controlCharacterSet(), U"\x01\x7F\u00AD\u200B\u2066\uFEFF\U000E0041", U" a\u2028"},
      {Set::illegalCharacterSet(), U"\u0378\uFFFE\uFDD0\U0001FFFF\U000E0000\U0010FFFF",
       U"a\uE000\U0001F600\U000F0000"},
      {Set::letterCharacterSet(), U"aZ\u00E9\u0301\u0627\u4E00\U00010400", U"1_ \u2167"},
      {Set::uppercaseLetterCharacterSet(), U"A\u00C9\u01C5\U00010400", U"a\u2160"},
      {Set::lowercaseLetterCharacterSet(), U"a\u00DF\U00010428", U"A\u01C5"},
      {Set::alphanumericCharacterSet(), U"a1\u2167\u0301\u00B2", U"_-\u20AC"},
      {Set::nonBaseCharacterSet(), U"\u0301\u0903\U000E0100", U"a "},
      {Set::punctuationCharacterSet(), U"_-(\u00BF\u3001", U"+$a"},
      {Set::symbolCharacterSet(), U"+$\u20AC\U0001F600", U"_a"}};
  // clang-format on
  for (const auto& [set, members, others] : cases) {
    const Ref<NSCharacterSet> inverted = set->invertedSet();
    for (const auto& [characters, isMember] : {std::pair(members, true), {others, false}}) {
      for (const char32_t character : characters) {
        EXPECT_EQ(set->longCharacterIsMember(character), isMember) << std::hex << +character;
        EXPECT_NE(inverted->longCharacterIsMember(character), isMember) << std::hex << +character;
      }
    }
    for (char32_t surrogate = 0xD800; surrogate < 0xE000; ++surrogate) {
      EXPECT_FALSE(set->characterIsMember(static_cast<char16_t>(surrogate)));
    }
    EXPECT_FALSE(set->longCharacterIsMember(0x110000) || inverted->longCharacterIsMember(~0u));
  }
}

TEST(NSCharacterSet, ChangesAgreeWithASimpleSet) {
  std::mt19937 random(7);
  // Few code points, near the borders of words, blocks and planes, so that changes overlap.
  constexpr std::array<char32_t, 6> bases = {0, 0xFFC0, 0xFFFF - 20, 0x103F0, 0x1FFF0, 0x10FFC0};
  const auto anyCodePoint = [&] {
    return static_cast<char32_t>(bases[random() % bases.size()] + random() % 64);
  };
  for (int round = 0; round < 20; ++round) {
    const Ref<NSMutableCharacterSet> set = NSMutableCharacterSet::characterSet();
    std::set<char32_t> model;
    for (int step = 0; step < 12; ++step) {
      const char32_t first = anyCodePoint();
      const std::size_t length = random() % 8 == 0 ? 0x2000 : random() % 100;
      const NSRange range{first, length};
      const Ref<NSCharacterSet> before = set->copy();
      const Ref<NSMutableCharacterSet> other = before->mutableCopy();
      const bool isAdded = random() % 5 > 1;
      if (random() % 2) {
        isAdded ? set->addCharactersInRange(range) : set->removeCharactersInRange(range);
      } else {
        const Ref<NSCharacterSet> change = NSCharacterSet::characterSetWithRange(range);
        isAdded ? set->formUnionWithCharacterSet(change)
                : set->formIntersectionWithCharacterSet(change->invertedSet());
      }
      for (std::size_t i = first; i < first + length && i <= NSCharacterSet::maxCodePoint; ++i) {
        isAdded ? void(model.insert(static_cast<char32_t>(i)))
                : void(model.erase(static_cast<char32_t>(i)));
      }
      EXPECT_TRUE(before->isEqual(*other) && before->hash() == other->hash());
    }
    for (const char32_t base : bases) {
      for (char32_t character = base < 9000 ? 0 : base - 9000; character < base + 9000;
           ++character) {
        ASSERT_EQ(set->longCharacterIsMember(character), model.contains(character))
            << std::hex << +character;
      }
    }
    EXPECT_TRUE(set->isSupersetOfSet(set->copy()) && set->isSupersetOfSet(nullptr));
    set->addCharactersInRange({0, SIZE_MAX});
    EXPECT_TRUE(set->isEqual(*NSMutableCharacterSet::characterSet()->invertedSet()));
  }
}

TEST(NSCharacterSet, CharactersOfAText) {
  const NSString text(std::u16string_view(u"a\u00E9\U0001F600\xD83D"));
  const Ref<NSMutableCharacterSet> set =
      NSCharacterSet::characterSetWithCharactersInString(text)->mutableCopy();
  EXPECT_TRUE(set->characterIsMember(u'\u00E9') && set->longCharacterIsMember(0x1F600));
  EXPECT_TRUE(set->characterIsMember(0xD83D) && !set->characterIsMember(0xDE00));
  set->removeCharactersInString(text);
  set->addCharactersInString(nullptr);
  EXPECT_TRUE(set->isEqual(*NSCharacterSet::characterSetWithCharactersInString(nullptr)));
  EXPECT_TRUE(set->isEqual(*NSCharacterSet::characterSetWithRange({0x110000, 5})));
  set->addCharactersInString("xy");
  set->formIntersectionWithCharacterSet(nullptr);
  EXPECT_TRUE(set->isEqual(*NSCharacterSet::characterSetWithRange({0, 0})));
}

}  // namespace zeb::test
