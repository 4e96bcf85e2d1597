#include "Text.h"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

namespace zeb::timeline {

namespace {

struct ScalarRange {
  char32_t first, last;
};

// Covers the scripts that are common in feeds; a Unicode library would cover the others, too.

/// Whether the scalar belongs to the preceding letter or emoji.
constexpr ScalarRange marks[] = {
    {0x300, 0x36F},   {0x591, 0x5BD},     {0x5BF, 0x5C7},    {0x610, 0x61A},   {0x64B, 0x65F},
    {0x670, 0x670},   {0x6D6, 0x6DC},     {0x6DF, 0x6E8},    {0x900, 0x902},   {0x93A, 0x93A},
    {0x93C, 0x93C},   {0x941, 0x948},     {0x94D, 0x94D},    {0xE31, 0xE31},   {0xE34, 0xE3A},
    {0xE47, 0xE4E},   {0x1160, 0x11FF},   {0x200B, 0x200F},  {0x20D0, 0x20FF}, {0x3099, 0x309A},
    {0xFE00, 0xFE0F}, {0x1F3FB, 0x1F3FF}, {0xE0020, 0xE01EF}};
constexpr ScalarRange wide[] = {
    {0x1100, 0x115F}, {0x231A, 0x231B}, {0x23E9, 0x23F3},   {0x2614, 0x2615},  {0x2648, 0x2653},
    {0x26A1, 0x26A1}, {0x26BD, 0x26BE}, {0x26C4, 0x26C5},   {0x26D4, 0x26D4},  {0x26F2, 0x26F5},
    {0x2705, 0x2705}, {0x270A, 0x270B}, {0x2728, 0x2728},   {0x274C, 0x274E},  {0x2753, 0x2757},
    {0x2B50, 0x2B55}, {0x2E80, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},  {0xFE30, 0xFE6F},
    {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}, {0x1F300, 0x1FAFF}, {0x20000, 0x3FFFD}};
constexpr ScalarRange regionalIndicators[] = {{0x1F1E6, 0x1F1FF}};
constexpr ScalarRange spaces[] = {{0x9, 0xD}, {0x20, 0x20}, {0x2028, 0x2029}};
constexpr ScalarRange unprintable[] = {{0, 0x1F}, {0x7F, 0x9F}, {0xD800, 0xDFFF}};
constexpr ScalarRange directions[] = {{0x202A, 0x202E}, {0x2066, 0x2069}};
constexpr ScalarRange rightToLeft[] = {{0x590, 0x8FF}, {0xFB1D, 0xFDFF}, {0xFE70, 0xFEFC}};
constexpr char32_t joiner = 0x200D;
constexpr char32_t emojiStyle = 0xFE0F;
constexpr std::size_t mostMarksInRow = 8;

bool isIn(std::span<const ScalarRange> ranges, char32_t scalar) {
  const auto range = std::ranges::lower_bound(ranges, scalar, {}, &ScalarRange::last);
  return range != ranges.end() && range->first <= scalar;
}

/// The scalar at `index`, or the unpaired surrogate there; moves `index` past it.
char32_t nextScalar(std::u16string_view units, std::size_t& index) {
  const char32_t unit = units[index++];
  const char32_t next = index < units.size() ? units[index] : 0;
  if ((unit & 0xFC00) != 0xD800 || (next & 0xFC00) != 0xDC00) return unit;
  ++index;
  return 0x10000 + ((unit & 0x3FF) << 10) + (next & 0x3FF);
}

/// Approximately what people see as one character.
struct Cluster {
  std::size_t end;  ///< in UTF-16 units; it begins at the end of the previous one
  std::size_t width;
  bool isSpace;
};

std::vector<Cluster> clustersOf(const NSString& text) {
  const std::u16string units = text.utf16();
  std::vector<Cluster> clusters;
  char32_t previous = 0;
  bool isHalfFlag = false;
  for (std::size_t index = 0; index < units.size();) {
    const char32_t scalar = nextScalar(units, index);
    const bool isIndicator = isIn(regionalIndicators, scalar);
    const bool isFlag = isHalfFlag && isIndicator;
    if (!clusters.empty() && (isFlag || previous == joiner || isIn(marks, scalar))) {
      clusters.back().end = index;
      if (isFlag || scalar == emojiStyle) clusters.back().width = 2;
    } else {
      clusters.push_back({index, isIn(wide, scalar) ? 2u : 1u, scalar == ' '});
    }
    isHalfFlag = isIndicator && !isFlag;
    previous = scalar;
  }
  return clusters;
}

/// The number of clusters that fit into the width.
std::size_t fitting(std::span<const Cluster> clusters, std::size_t width) {
  std::size_t count = 0;
  while (count < clusters.size() && clusters[count].width <= width) {
    width -= clusters[count++].width;
  }
  return count;
}

}  // namespace

NSString printable(const NSString& text) {
  const std::u16string units = text.utf16();
  std::u16string result;
  std::size_t marksInRow = 0;
  for (std::size_t index = 0; index < units.size();) {
    const std::size_t start = index;
    const char32_t scalar = nextScalar(units, index);
    marksInRow = isIn(marks, scalar) ? marksInRow + 1 : 0;
    if (isIn(spaces, scalar)) {
      if (!result.empty() && result.back() != u' ') result += u' ';
    } else if (isIn(unprintable, scalar)) {
      result += u'\uFFFD';
    } else if (!isIn(directions, scalar) && marksInRow <= mostMarksInRow) {
      result.append(units, start, index - start);
    }
  }
  return NSString(std::u16string_view(result));
}

std::size_t displayWidth(const NSString& text) {
  std::size_t width = 0;
  for (const Cluster& cluster : clustersOf(text)) width += cluster.width;
  return width;
}

std::vector<NSString> wrapped(const NSString& text, std::size_t width, std::size_t maximumLines) {
  const std::vector<Cluster> clusters = clustersOf(text);
  std::vector<NSString> lines;
  for (std::size_t first = 0; first < clusters.size() && lines.size() < maximumLines;) {
    const std::span rest = std::span(clusters).subspan(first);
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
    const std::size_t start = first > 0 ? clusters[first - 1].end : 0;
    const NSString line = text.substringWithRange({start, rest[count - 1].end - start});
    lines.push_back(isCut ? line.stringByAppendingString("…") : line);
    first += count;
    while (first < clusters.size() && clusters[first].isSpace) ++first;
  }
  return lines;
}

bool hasRightToLeftLetters(const NSString& text) {
  return std::ranges::any_of(text.utf16(), [](char16_t unit) { return isIn(rightToLeft, unit); });
}

}  // namespace zeb::timeline
