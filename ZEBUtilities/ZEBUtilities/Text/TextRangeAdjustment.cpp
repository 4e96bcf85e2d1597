#include <ZEBUtilities/Text/TextRangeAdjustmentPrivate.h>

#include <algorithm>
#include <vector>

namespace zeb::detail {

namespace {

/// Shorter ways through references are followed again each time, which costs less than notes.
constexpr std::size_t maxStepsWithoutNote = 8;

}  // namespace

std::size_t TextRangeAdjustment::shrinkBefore(std::size_t reference) const noexcept {
  if (reference < references_.size()) return references_[reference].shrinkBefore;
  if (references_.empty()) return 0;
  return references_.back().shrinkBefore + references_.back().shrink();
}

std::size_t TextRangeAdjustment::firstEndingAfter(std::size_t position,
                                                  std::size_t from) const noexcept {
  // The distance doubles, because the reference is usually near.
  std::size_t distance = 1;
  std::size_t to = from;
  while (to < references_.size() && references_[to].end <= position) {
    from = to + 1;
    to += distance;
    distance *= 2;
  }
  const auto candidates = references_.subspan(from, std::min(to, references_.size()) - from);
  const auto found = std::ranges::upper_bound(candidates, position, {}, &HTMLReference::end);
  return from + static_cast<std::size_t>(found - candidates.begin());
}

TextRangeAdjustment::Place TextRangeAdjustment::settled(Place place) {
  std::vector<std::size_t> positions;
  for (std::size_t steps = 0;; ++steps) {
    place.reference = firstEndingAfter(place.position, place.reference);
    if (place.reference == references_.size()) break;
    const HTMLReference& reference = references_[place.reference];
    if (reference.start >= place.position) break;
    if (steps >= maxStepsWithoutNote) {
      const auto known = settledPlaces_.find(place.position);
      if (known != settledPlaces_.end()) {
        place = known->second;
        break;
      }
      positions.push_back(place.position);
    }
    // The place stays in the unescaped text: it is now further back in what is still escaped.
    place.position += reference.shrink();
    ++place.reference;
  }
  for (const std::size_t position : positions) settledPlaces_.emplace(position, place);
  return place;
}

NSRange TextRangeAdjustment::adjusted(NSRange range) {
  // Ranges are often in order, so that the search begins where the last one did.
  const bool isBehind = range.location >= last_.position;
  last_ = {range.location, firstEndingAfter(range.location, isBehind ? last_.reference : 0)};
  const Place start = settled(last_);
  const std::size_t shrinkBeforeStart = shrinkBefore(start.reference);
  const std::size_t location = start.position - shrinkBeforeStart;
  // If this wraps around, no remaining reference is before it, and the length stays.
  const std::size_t end = location + range.length;

  // Ends beyond the text are not converted to positions in it, which could exceed machine words.
  const bool isBeyond = references_.empty() || end >= references_.back().end;
  if (isBeyond) {
    return {location, range.length - (shrinkBefore(references_.size()) - shrinkBeforeStart)};
  }
  const Place stop = settled({end + shrinkBeforeStart, start.reference});
  return {location, stop.position - shrinkBefore(stop.reference) - location};
}

}  // namespace zeb::detail
