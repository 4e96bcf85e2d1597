#include "Text.h"

#include <ZEBPlatform/Text/NSCharacterSet.h>
#include <ZEBPlatform/Text/NSString+ComposedCharacters.h>
#include <ZEBUtilities/Text/NSString+ZEBInternational.h>

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

namespace zeb::timeline {

namespace {

struct ScalarRange {
  char32_t first, last;
};

/// The scalars that take two columns.
constexpr ScalarRange wide[] = {
    {0x1100, 0x115F}, {0x231A, 0x231B}, {0x23E9, 0x23F3},   {0x2614, 0x2615},   {0x2648, 0x2653},
    {0x26A1, 0x26A1}, {0x26BD, 0x26BE}, {0x26C4, 0x26C5},   {0x26D4, 0x26D4},   {0x26F2, 0x26F5},
    {0x2705, 0x2705}, {0x270A, 0x270B}, {0x2728, 0x2728},   {0x274C, 0x274E},   {0x2753, 0x2757},
    {0x2B50, 0x2B55}, {0x2E80, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},
    {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}, {0x1F1E6, 0x1F1FF}, {0x1F300, 0x1FAFF}, {0x20000, 0x3FFFD}};
/// Marks that take a column beside their letter. Covers Devanagari, as an example.
constexpr ScalarRange spacingMarks[] = {
    {0x903, 0x903}, {0x93B, 0x93B}, {0x93E, 0x940}, {0x949, 0x94C}, {0x94E, 0x94F}};
constexpr ScalarRange unprintable[] = {{0, 0x1F}, {0x7F, 0x9F}, {0xD800, 0xDFFF}};
constexpr char16_t emojiStyle = 0xFE0F;
/// More than the longest emoji has. Some texts have hundreds of marks on one letter.
constexpr std::size_t maxUnitsOfCharacter = 40;

bool isIn(std::span<const ScalarRange> ranges, char32_t scalar) {
  const auto range = std::ranges::lower_bound(ranges, scalar, {}, &ScalarRange::last);
  return range != ranges.end() && range->first <= scalar;
}

bool isPair(char16_t high, char16_t low) {
  return (high & 0xFC00) == 0xD800 && (low & 0xFC00) == 0xDC00;
}

/// The first scalar, or the unpaired surrogate there, of text that is not empty.
char32_t firstScalar(std::u16string_view units) {
  if (units.size() < 2 || !isPair(units[0], units[1])) return units[0];
  return 0x10000 + ((char32_t(units[0]) & 0x3FF) << 10) + (units[1] & 0x3FF);
}

/// What people see as one character.
struct Character {
  std::size_t end;  ///< in UTF-16 units; it begins at the end of the previous one
  std::size_t width;
  bool isSpace;
};

std::vector<Character> charactersOf(const NSString& text) {
  const std::u16string units = text.utf16();
  std::vector<Character> characters;
  enumerateComposedCharacterSequences(text, [&](NSRange range, bool&) {
    const auto sequence = std::u16string_view(units).substr(range.location, range.length);
    const bool isWide =
        isIn(wide, firstScalar(sequence)) || sequence.find(emojiStyle) != std::u16string_view::npos;
    const auto marks =
        std::ranges::count_if(sequence, [](char16_t unit) { return isIn(spacingMarks, unit); });
    const std::size_t width = (isWide ? 2 : 1) + static_cast<std::size_t>(marks);
    characters.push_back({range.location + range.length, width, sequence == u" "});
  });
  return characters;
}

/// The number of characters that fit into the width.
std::size_t fitting(std::span<const Character> characters, std::size_t width) {
  std::size_t count = 0;
  while (count < characters.size() && characters[count].width <= width) {
    width -= characters[count++].width;
  }
  return count;
}

}  // namespace

NSString printable(const NSString& text) {
  const NSString visible = zeb_stringByRemovingAllDirectionControlCharacters(text);
  const std::u16string units = visible.utf16();
  const auto spaces = NSCharacterSet::whitespaceAndNewlineCharacterSet();
  std::u16string result;
  enumerateComposedCharacterSequences(visible, [&](NSRange range, bool&) {
    const auto sequence = std::u16string_view(units).substr(range.location, range.length);
    if (spaces->characterIsMember(sequence.front())) {
      if (!result.empty() && result.back() != u' ') result += u' ';
    } else if (isIn(unprintable, firstScalar(sequence))) {
      result += u'\uFFFD';
    } else {
      std::size_t length = std::min(sequence.size(), maxUnitsOfCharacter);
      if (length < sequence.size() && isPair(sequence[length - 1], sequence[length])) --length;
      result += sequence.substr(0, length);
    }
  });
  return NSString(std::u16string_view(result));
}

std::size_t displayWidth(const NSString& text) {
  std::size_t width = 0;
  for (const Character& character : charactersOf(text)) width += character.width;
  return width;
}

std::vector<NSString> wrapped(const NSString& text, std::size_t width, std::size_t maximumLines) {
  const std::vector<Character> characters = charactersOf(text);
  std::vector<NSString> lines;
  for (std::size_t first = 0; first < characters.size() && lines.size() < maximumLines;) {
    const std::span rest = std::span(characters).subspan(first);
    const bool isLastLine = lines.size() + 1 == maximumLines;
    std::size_t count = fitting(rest, width);
    const bool isCut = isLastLine && count < rest.size();
    if (isCut) {
      count = fitting(rest, width - 1);
    } else if (count < rest.size()) {
      std::size_t space = count;
      while (space > 0 && !rest[space].isSpace) --space;
      if (space > 0) count = space;
    }
    const std::size_t start = first > 0 ? characters[first - 1].end : 0;
    const NSString line = text.substringWithRange({start, rest[count - 1].end - start});
    lines.push_back(isCut ? line.stringByAppendingString("…") : line);
    first += count;
    while (first < characters.size() && characters[first].isSpace) ++first;
  }
  return lines;
}

}  // namespace zeb::timeline
