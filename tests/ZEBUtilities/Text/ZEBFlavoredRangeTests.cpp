#include <ZEBPlatform/Geometry/NSValue.h>
#include <ZEBPlatform/KeyedCoding.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>
#include <ZEBUtilities/Text.h>
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "Support/LogRecorder.h"
#include "Support/Support.h"

namespace zeb::test {

namespace {

using Flavored = ZEBFlavoredRange;
using Hyperlink = ZEBHyperlinkFlavoredRange;

NSArray boxedRanges(const std::vector<NSRange>& ranges) {
  NSMutableArray array;
  for (const NSRange& range : ranges) array.addObject(boxed(range));
  return array;
}

}  // namespace

TEST(ZEBActiveTextRange, OrdersByLocationAndLengthAndLogsWhatHasNoRange) {
  const Value flavored = makeRef<Flavored>(NSRange{2, 3});
  EXPECT_EQ(ZEBActiveTextRangesCompare(flavored, boxed(NSRange{3, 1})), NSOrderedAscending);
  EXPECT_EQ(ZEBActiveTextRangesCompare(flavored, boxed(NSRange{2, 1})), NSOrderedDescending);
  EXPECT_EQ(ZEBActiveTextRangesCompare(flavored, boxed(NSRange{2, 3})), NSOrderedSame);
  LogRecorder log;
  EXPECT_EQ(ZEBActiveTextRangesCompare("text", nullptr), NSOrderedAscending);
  EXPECT_EQ(log.take(),
            (std::vector<std::string>{"3|ZEBUtilities|ZEBUtilities/ZEBUtilities/ZEBActiveTextRange|"
                                      "ZEBActiveTextRangesCompare|text comparing with (null)"}));
}

TEST(ZEBActiveTextRange, RemovesNeighboursThatOverlap) {
  struct Row {
    std::vector<NSRange> ranges, kept;
  };
  constexpr std::size_t max = SIZE_MAX;
  const Row rows[] = {
      {{{0, 5}, {3, 4}}, {{0, 5}}},
      {{{2, 3}, {2, 6}}, {{2, 6}}},
      {{{2, 6}, {2, 6}}, {{2, 6}}},
      {{{0, 5}, {5, 2}}, {{0, 5}, {5, 2}}},
      {{{0, 5}, {2, 0}, {3, 4}}, {{0, 5}, {2, 0}, {3, 4}}},
      // The survivor of one overlap is compared with the next neighbour only.
      {{{0, 4}, {3, 1}, {3, 5}, {8, 1}}, {{0, 4}, {8, 1}}},
      {{{0, 4}, {4, 1}, {4, 9}, {5, 1}}, {{0, 4}, {4, 9}}},
      {{{0, max}, {max, max}}, {{0, max}, {max, max}}},
      {{{1, max}, {max - 1, 1}}, {{1, max}}},
      {{{7, 1}}, {{7, 1}}},
  };
  for (const auto& [ranges, kept] : rows) {
    EXPECT_EQ(ZEBActiveTextRangesByRemovingIntersections(boxedRanges(ranges)), boxedRanges(kept));
  }
  EXPECT_TRUE(ZEBActiveTextRangesByRemovingIntersections(nullptr).isNil());
  const NSMutableArray single{Value(1)};
  const NSArray copy = ZEBActiveTextRangesByRemovingIntersections(single);
  EXPECT_FALSE(copy.isMutable());
  EXPECT_EQ(ZEBActiveTextRangesByRemovingIntersections(NSArray{1, 2, 3}).count(), 3u);
  // Quadratic work would not end.
  const std::vector<NSRange> many(300'000, {1, 2});
  EXPECT_EQ(ZEBActiveTextRangesByRemovingIntersections(boxedRanges(many)).count(), 1u);
}

TEST(ZEBFlavoredRange, ComparesByClassAndFieldsAndOnlyWithText) {
  const auto text = makeRef<Flavored>(NSRange{1, 2}, 1, "a");
  EXPECT_TRUE(text->isEqual(*makeRef<Flavored>(NSRange{1, 2}, 1, "a")));
  EXPECT_EQ(text->hash(), text->copyWithZone()->hash());
  EXPECT_FALSE(text->isEqual(*makeRef<Flavored>(NSRange{1, 3}, 1, "a")));
  EXPECT_FALSE(text->isEqual(*makeRef<Flavored>(NSRange{1, 2}, 2, "a")));
  EXPECT_FALSE(text->isEqual(*makeRef<Flavored>(NSRange{1, 2}, 1, "b")));
  const auto link = makeRef<Hyperlink>(NSRange{1, 2}, "x:y", "a");
  EXPECT_FALSE(text->isEqual(*link));
  EXPECT_FALSE(link->isEqual(*text));
  EXPECT_TRUE(link->isEqual(*makeRef<Hyperlink>(NSRange{1, 2}, "other", "a")));
  EXPECT_EQ(link->hash(), text->hash() * 19 + NSString("x:y").hash());
  const auto plain = makeRef<Flavored>(NSRange{1, 2});
  EXPECT_FALSE(plain->isEqual(*plain));
  EXPECT_EQ(plain->hash(), boxed(NSRange{1, 2}).object()->hash() * 19);
  EXPECT_EQ(plain->description(), "<ZEBFlavoredRange: 0, {1, 2}, ((null))>");
  EXPECT_EQ(link->description(), "<ZEBHyperlinkFlavoredRange: 1, {1, 2}, (a)>\nURL: x:y");
}

TEST(ZEBFlavoredRange, CopiesKeepTheClassButNotTheTarget) {
  NSMutableString changing("a");
  const Ref<Flavored> link = makeRef<Hyperlink>(NSRange{1, 2}, changing, changing);
  changing.setString("b");
  const auto moved = link->copyWithRangeValue({5, 6});
  EXPECT_EQ(moved->description(), "<ZEBHyperlinkFlavoredRange: 1, {5, 6}, (a)>\nURL: (null)");
  EXPECT_EQ(link->copyWithZone()->description(), link->description());
  EXPECT_EQ(link->description(), "<ZEBHyperlinkFlavoredRange: 1, {1, 2}, (a)>\nURL: a");
}

TEST(ZEBFlavoredRange, ReadsPropertyListsOfAnyOrigin) {
  const auto flavored = makeRef<Flavored>(NSRange{7, 0x7FFFFFFF}, -3, "a");
  EXPECT_TRUE(
      Flavored::initWithPlistDictionary(flavored->plistDictionaryValue())->isEqual(*flavored));
  EXPECT_TRUE(Flavored::initWithPlistDictionary(nullptr) == nullptr);
  EXPECT_EQ(makeRef<Flavored>(NSRange{SIZE_MAX, 0}, 2)->plistDictionaryValue(),
            (NSDictionary{
                {"rangeValueLocation", UINT64_MAX}, {"rangeValueLength", 0}, {"rangeFlavor", 2}}));
  const NSDictionary odd{{"rangeValueLocation", "12abc"},
                         {"rangeValueLength", 0x1'0000'0001},
                         {"rangeFlavor", NSArray{1}},
                         {"displayString", 5},
                         {"rangeURL", 7}};
  EXPECT_EQ(Flavored::initWithPlistDictionary(odd)->description(),
            "<ZEBFlavoredRange: 0, {12, 1}, ((null))>");
  EXPECT_EQ(Hyperlink::initWithPlistDictionary(odd)->description(),
            "<ZEBHyperlinkFlavoredRange: 1, {12, 1}, ((null))>\nURL: (null)");
  const auto link = makeRef<Hyperlink>(NSRange{1, 2}, "x:y");
  EXPECT_EQ(Hyperlink::initWithPlistDictionary(link->plistDictionaryValue())->description(),
            link->description());
}

TEST(ZEBFlavoredRange, TravelsThroughTheKeyedCoder) {
  const auto link = makeRef<Hyperlink>(NSRange{SIZE_MAX, SIZE_MAX - 1}, "x:\xF0\x9F\x98\x80", "a");
  const NSData data = NSKeyedArchiver::archivedDataWithRootObject(link);
  NSError error;
  const auto read = NSKeyedUnarchiver::unarchivedObjectOfClass<Hyperlink>(data, &error);
  ASSERT_TRUE(read) << error;
  EXPECT_EQ(read->description(), link->description());
  const auto wide = makeRef<Flavored>(NSRange{}, 0x1'0000'0005, "a");
  EXPECT_EQ(NSKeyedUnarchiver::unarchivedObjectOfClass<Flavored>(
                NSKeyedArchiver::archivedDataWithRootObject(wide))
                ->rangeFlavor(),
            5);
  // Only the class asked for is made.
  EXPECT_FALSE(NSKeyedUnarchiver::unarchivedObjectOfClass<Flavored>(data, &error));
  EXPECT_EQ(error.localizedDescription(),
            "The archive contains a ZEBHyperlinkFlavoredRange, but a ZEBFlavoredRange was "
            "expected.");
}

TEST(ZEBFlavoredRange, AnswersSelectors) {
  Class* const cls = objc_lookUpClass("ZEBHyperlinkFlavoredRange");
  const auto link =
      send(cls, "initWithRange:rangeURL:displayString:"_sel, boxed(NSRange{1, 2}), "x", "");
  EXPECT_EQ(send(link, "plistDictionaryValue"_sel), (NSDictionary{{"rangeValueLocation", 1},
                                                                  {"rangeValueLength", 2},
                                                                  {"rangeFlavor", 1},
                                                                  {"displayString", ""},
                                                                  {"rangeURL", "x"}}));
  EXPECT_EQ(send<std::int64_t>(link, "compare:"_sel, boxed(NSRange{1, 3})), NSOrderedAscending);
  EXPECT_EQ(raisedName([&] { send(link, "copyWithRangeValue:"_sel, 5); }),
            "NSInvalidArgumentException");
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_DEATH(send(cls, "new"_sel),
               "^\\+\\[ZEBHyperlinkFlavoredRange new\\]: unrecognized selector sent to class 0x");
}

}  // namespace zeb::test
