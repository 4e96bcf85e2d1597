#include <ZEBPlatform/Text/NSString+ComposedCharacters.h>
#include <unicode/ubrk.h>

#include "Support/Support.h"

namespace zeb::test {
namespace {

/// The boundaries that ICU alone finds, the ends of the text included.
std::vector<std::size_t> boundariesByICU(const std::u16string& units) {
  UErrorCode status = U_ZERO_ERROR;
  UBreakIterator* iterator =
      ubrk_open(UBRK_CHARACTER, "", units.data(), static_cast<std::int32_t>(units.size()), &status);
  std::vector<std::size_t> boundaries;
  for (std::int32_t place = ubrk_first(iterator); place >= 0; place = ubrk_next(iterator))
    boundaries.push_back(static_cast<std::size_t>(place));
  ubrk_close(iterator);
  return boundaries;
}

void expectBoundariesOfICU(const std::u16string& units) {
  const NSString text{std::u16string_view(units)};
  const std::vector<std::size_t> expected = boundariesByICU(units);
  std::vector<std::size_t> found{0};
  enumerateComposedCharacterSequences(text, [&](NSRange sequence, bool&) {
    ASSERT_EQ(sequence.location, found.back());
    found.push_back(sequence.location + sequence.length);
    // Another search on the same thread moves the iterator that both use.
    const NSRange same = rangeOfComposedCharacterSequenceAtIndex(text, found.back() - 1);
    ASSERT_EQ(same, sequence);
    ASSERT_EQ(rangeOfComposedCharacterSequenceAtIndex(text, sequence.location), sequence);
  });
  ASSERT_EQ(found, expected) << testing::PrintToString(units);
}

TEST(ComposedCharacters, AreThoseOfICU) {
  // One of each kind: controls, marks, joiners, flags, keycaps, pictographs, tags, Hangul, Indic
  // scripts, unpaired surrogates, unassigned code points.
  const char32_t kinds[] = {'\r',    '\n',    'a',     '1',     0xAD,    0xA9,    0x301,   0x600,
                            0x903,   0x915,   0x94D,   0x93F,   0xE33,   0x1100,  0x1161,  0x11A8,
                            0xAC00,  0xAC01,  0x200B,  0x200C,  0x200D,  0x20E3,  0x2764,  0x3042,
                            0x3099,  0x4E00,  0xA9BD,  0xD83C,  0xDC00,  0xFE0F,  0xFF9E,  0xFFFF,
                            0x1F1E6, 0x1F1E7, 0x1F3FB, 0x1F468, 0x1F600, 0x11301, 0xE0067, 0xE01EF};
  std::mt19937 random(1);
  for (int round = 0; round < 20'000; ++round) {
    std::u16string units;
    const char32_t* favourite = &kinds[random() % std::size(kinds)];
    for (auto length = random() % 12; length > 0; --length) {
      const char32_t scalar = random() % 3 ? kinds[random() % std::size(kinds)] : *favourite;
      if (scalar >= 0x10000) units += static_cast<char16_t>(0xD7C0 + (scalar >> 10));
      units += static_cast<char16_t>(scalar >= 0x10000 ? 0xDC00 + (scalar & 0x3FF) : scalar);
    }
    ASSERT_NO_FATAL_FAILURE(expectBoundariesOfICU(units));
  }
  // Every code unit between others; and longer runs than the search for a start looks back.
  std::u16string all;
  for (char32_t unit = 0; unit <= 0xFFFF; ++unit) {
    all += {u'a', static_cast<char16_t>(unit), u'a', static_cast<char16_t>(unit)};
    all += {u'\u0915', static_cast<char16_t>(unit), u'\xD83D'};
  }
  expectBoundariesOfICU(all);
  std::u16string flags;
  while (flags.size() < 202) flags += u"\U0001F1E6";
  expectBoundariesOfICU(flags + std::u16string(200, u'\u0301') + u'\u0928');
}

TEST(ComposedCharacters, RangesGrowToWholeSequences) {
  const NSString text("e\u0301\r\nx");
  const std::pair<NSRange, NSRange> cases[] = {{{0, 1}, {0, 2}}, {{1, 2}, {0, 4}},
                                               {{1, 0}, {0, 2}}, {{5, 0}, {5, 0}},
                                               {{4, 1}, {4, 1}}, {{3, 2}, {2, 3}}};
  for (const auto& [range, expected] : cases)
    EXPECT_EQ(rangeOfComposedCharacterSequencesForRange(text, range), expected) << range.location;
  EXPECT_EQ(rangeOfComposedCharacterSequenceAtIndex("a\r\n", 2), (NSRange{1, 2}));
  EXPECT_EQ(rangeOfComposedCharacterSequenceAtIndex(nullptr, 2), (NSRange{NSNotFound, 0}));
  EXPECT_THROW(rangeOfComposedCharacterSequenceAtIndex(text, 5), NSException);
  EXPECT_THROW(rangeOfComposedCharacterSequencesForRange(text, {1, NSNotFound}), NSException);
}

TEST(ComposedCharacters, EnumerationStopsAndToleratesChanges) {
  NSMutableString text{NSString("ab\u0301c")};
  std::string seen;
  enumerateComposedCharacterSequences(text, [&](NSRange sequence, bool& stop) {
    text.setString("");
    seen += std::to_string(sequence.length);
    stop = sequence.location == 1;
  });
  enumerateComposedCharacterSequences(nullptr, [&](NSRange, bool&) { seen += "!"; });
  EXPECT_EQ(seen, "12");
}

}  // namespace
}  // namespace zeb::test
