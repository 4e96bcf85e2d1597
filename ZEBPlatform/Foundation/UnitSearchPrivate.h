#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <string_view>

namespace zeb::detail {

/// Where a long pattern is cut in two, and the distance by which it may move after a mismatch on
/// the left of the cut.
struct PatternCut {
  std::size_t cut;
  std::size_t period;
};

/// The maximal suffix of the pattern in the order of units or in the reverse order, and its period.
template <class Unit>
PatternCut maximalSuffix(std::basic_string_view<Unit> pattern, bool isReversed) noexcept {
  std::size_t begin = 0, candidate = 1, offset = 0, period = 1;
  while (candidate + offset < pattern.size()) {
    const Unit unit = pattern[candidate + offset];
    const Unit known = pattern[begin + offset];
    if (unit == known) {
      if (++offset == period) {
        candidate += period;
        offset = 0;
      }
    } else if ((unit < known) != isReversed) {
      candidate += offset + 1;
      offset = 0;
      period = candidate - begin;
    } else {
      begin = candidate++;
      offset = 0;
      period = 1;
    }
  }
  return {begin, period};
}

/// The first place of the pattern, or npos. The two-way algorithm of Crochemore and Perrin: linear
/// time and no memory, whatever the text and the pattern contain. For patterns that are long; the
/// standard library's search is faster for short ones.
template <class TextUnit, class Unit>
std::size_t placeOfLongPattern(std::basic_string_view<TextUnit> text,
                               std::basic_string_view<Unit> pattern) noexcept {
  const PatternCut forward = maximalSuffix(pattern, false);
  const PatternCut backward = maximalSuffix(pattern, true);
  const auto [cut, suffixPeriod] = forward.cut > backward.cut ? forward : backward;
  const bool isPeriodic = suffixPeriod + cut <= pattern.size() &&
                          pattern.substr(0, cut) == pattern.substr(suffixPeriod, cut);
  const std::size_t period = isPeriodic ? suffixPeriod : (std::max)(cut, pattern.size() - cut) + 1;

  // How much of the pattern's beginning is known to match, because it moved by its period.
  std::size_t known = 0;
  for (std::size_t place = 0; place + pattern.size() <= text.size();) {
    std::size_t right = (std::max)(cut, known);
    while (right < pattern.size() && pattern[right] == static_cast<Unit>(text[place + right])) {
      ++right;
    }
    if (right < pattern.size()) {
      place += right - cut + 1;
      known = 0;
      continue;
    }
    std::size_t left = cut;
    while (left > known && pattern[left - 1] == static_cast<Unit>(text[place + left - 1])) --left;
    if (left <= known) return place;
    place += period;
    known = isPeriodic ? pattern.size() - period : 0;
  }
  return std::basic_string_view<TextUnit>::npos;
}

/// The first place of the pattern, which is not empty, or npos. Linear time.
template <class TextUnit, class Unit>
std::size_t placeOfPattern(std::basic_string_view<TextUnit> text,
                           std::basic_string_view<Unit> pattern) noexcept {
  constexpr std::size_t maxShortPattern = 16;
  if (pattern.size() > maxShortPattern) return placeOfLongPattern(text, pattern);
  if constexpr (std::same_as<TextUnit, Unit>) {
    return text.find(pattern);
  } else {
    const auto found = std::search(text.begin(), text.end(), pattern.begin(), pattern.end());
    return found == text.end() ? text.npos : static_cast<std::size_t>(found - text.begin());
  }
}

}  // namespace zeb::detail
