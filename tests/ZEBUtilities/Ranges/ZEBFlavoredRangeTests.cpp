#include <ZEBPlatform/Geometry/NSValue.h>
#include <ZEBPlatform/KeyedCoding.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBUtilities/Ranges.h>

#include "Support/LogRecorder.h"
#include "Support/Support.h"

namespace zeb::test {

using Flavored = ZEBFlavoredRange;
using Hyperlink = ZEBHyperlinkFlavoredRange;

NSArray boxedRanges(const std::vector<NSRange>& ranges) {
  NSMutableArray array;
  for (const NSRange& range : ranges) array.addObject(boxed(range));
  return array;
}

TEST(ZEBActiveTextRange, OrdersByLocationAndLengthAndLogsWhatHasNoRange) {
  const std::pair<NSRange, NSComparisonResult> rows[] = {
      {{3, 1}, NSOrderedAscending}, {{2, 1}, NSOrderedDescending}, {{2, 3}, NSOrderedSame}};
  for (const auto& [range, result] : rows)
    EXPECT_EQ(makeRef<Flavored>(NSRange{2, 3})->compare(boxed(range)), result);
  LogRecorder log;
  EXPECT_EQ(ZEBActiveTextRangesCompare("text", nullptr), NSOrderedAscending);
  EXPECT_EQ(log.take(),
            (std::vector<std::string>{"3|ZEBUtilities|ZEBUtilities/ZEBUtilities/ZEBActiveTextRange|"
                                      "ZEBActiveTextRangesCompare|text comparing with (null)"}));
}

TEST(ZEBActiveTextRange, RemovesNeighboursThatOverlap) {
  constexpr std::size_t max = SIZE_MAX;
  using Ranges = std::vector<NSRange>;
  const std::pair<Ranges, Ranges> rows[] = {
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
      // Quadratic work would not end.
      {Ranges(300'000, {1, 2}), {{1, 2}}}};
  for (const auto& [ranges, kept] : rows)
    EXPECT_EQ(ZEBActiveTextRangesByRemovingIntersections(boxedRanges(ranges)), boxedRanges(kept));
  EXPECT_TRUE(ZEBActiveTextRangesByRemovingIntersections(nullptr).isNil());
  EXPECT_FALSE(ZEBActiveTextRangesByRemovingIntersections(NSMutableArray{Value(1)}).isMutable());
  EXPECT_EQ(ZEBActiveTextRangesByRemovingIntersections(NSArray{1, 2, 3}).count(), 3u);
}

TEST(ZEBFlavoredRange, ComparesByClassAndFieldsAndOnlyWithText) {
  const auto text = makeRef<Flavored>(NSRange{1, 2}, 1, "a");
  EXPECT_TRUE(text->isEqual(*makeRef<Flavored>(NSRange{1, 2}, 1, "a")));
  EXPECT_EQ(text->hash(), text->copyWithZone()->hash());
  const auto link = makeRef<Hyperlink>(NSRange{1, 2}, "x:y", "a");
  for (const Ref<Flavored>& other :
       {makeRef<Flavored>(NSRange{1, 3}, 1, "a"), makeRef<Flavored>(NSRange{1, 2}, 2, "a"),
        makeRef<Flavored>(NSRange{1, 2}, 1, "b"), Ref<Flavored>(link)})
    EXPECT_FALSE(text->isEqual(*other) || other->isEqual(*text)) << other->description();
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
  const auto back = [](const auto& range) {
    return range->initWithPlistDictionary(range->plistDictionaryValue())->description();
  };
  const auto flavored = makeRef<Flavored>(NSRange{7, 0x7FFFFFFF}, -3, "a");
  const auto link = makeRef<Hyperlink>(NSRange{1, 2}, "x:y");
  EXPECT_EQ(back(flavored), flavored->description());
  EXPECT_EQ(back(link), link->description());
  EXPECT_FALSE(Flavored::initWithPlistDictionary(nullptr));
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
}

TEST(ZEBFlavoredRange, TravelsThroughTheKeyedCoder) {
  const auto link = makeRef<Hyperlink>(NSRange{SIZE_MAX, SIZE_MAX - 1}, "x:\xF0\x9F\x98\x80", "a");
  const auto wide = makeRef<Flavored>(NSRange{}, 0x1'0000'0005, "a");
  NSError error;
  const auto back = [&error]<class T>(const Ref<T>& range) {
    return NSKeyedUnarchiver::unarchivedObjectOfClass<T>(
        NSKeyedArchiver::archivedDataWithRootObject(range), &error);
  };
  ASSERT_TRUE(back(link)) << error;
  EXPECT_EQ(back(link)->description(), link->description());
  EXPECT_EQ(back(wide)->rangeFlavor(), 5);
  // Only the class asked for is made.
  EXPECT_FALSE(back(Ref<Flavored>(link)));
  EXPECT_EQ(error.localizedDescription(),
            "The archive contains a ZEBHyperlinkFlavoredRange, but a ZEBFlavoredRange was "
            "expected.");
}

TEST(ZEBFlavoredRange, AnswersSelectors) {
  Class* const cls = objc_lookUpClass("ZEBHyperlinkFlavoredRange");
  const auto link =
      send(cls, "initWithRange:rangeURL:displayString:"_sel, boxed(NSRange{1, 2}), "x", "");
  const NSDictionary plist(send(link, "plistDictionaryValue"_sel));
  EXPECT_TRUE(plist.count() == 5 && plist["displayString"] == "" && plist["rangeURL"] == "x");
  EXPECT_EQ(send<std::int64_t>(link, "compare:"_sel, boxed(NSRange{1, 3})), NSOrderedAscending);
  EXPECT_EQ(raisedName([&] { send(link, "copyWithRangeValue:"_sel, 5); }),
            "NSInvalidArgumentException");
  const Value plain = send(cls, "initWithRangeValue:"_sel, boxed(NSRange{1, 2}));
  EXPECT_TRUE(plain.object<ZEBHyperlinkFlavoredRange>());
  EXPECT_FALSE(send<bool>(plain, "isEqual:"_sel, plain));
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  EXPECT_DEATH(send(cls, "new"_sel),
               "^\\+\\[ZEBHyperlinkFlavoredRange new\\]: unrecognized selector sent to class 0x");
}

}  // namespace zeb::test
