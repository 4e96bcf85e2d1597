#include <ZEBUtilities/Text/TextRangeAdjustmentPrivate.h>

#include <algorithm>
#include <vector>

namespace zeb::detail {

std::size_t TextRangeAdjustment::shrinkBefore(std::size_t reference) const noexcept {
  if (reference < references_.size()) return references_[reference].shrinkBefore;
  if (references_.empty()) return 0;
  return references_.back().shrinkBefore + references_.back().shrink();
}

TextRangeAdjustment::Place TextRangeAdjustment::settled(Place place) {
  std::vector<std::size_t> positions;
  for (;;) {
    const auto after = std::upper_bound(
        references_.begin() + static_cast<std::ptrdiff_t>(place.reference), references_.end(),
        place.position, [](std::size_t position, const HTMLReference& reference) {
          return position < reference.end;
        });
    place.reference = static_cast<std::size_t>(after - references_.begin());
    if (after == references_.end() || after->start >= place.position) break;
    if (const auto known = settledPlaces_.find(place.position); known != settledPlaces_.end()) {
      place = known->second;
      break;
    }
    positions.push_back(place.position);
    // The place stays in the unescaped text: it is now further back in what is still escaped.
    place.position += after->shrink();
    ++place.reference;
  }
  for (const std::size_t position : positions) settledPlaces_.emplace(position, place);
  return place;
}

NSRange TextRangeAdjustment::adjusted(NSRange range) {
  const Place start = settled({range.location, 0});
  const std::size_t shrinkBeforeStart = shrinkBefore(start.reference);
  const std::size_t location = start.position - shrinkBeforeStart;
  // If this wraps around, no remaining reference is before it, and the length stays.
  const std::size_t end = location + range.length;

  // Ends beyond the text are not converted to positions in it, which could exceed machine words.
  const bool isBeyond = references_.empty() || end >= references_.back().end;
  if (isBeyond) {
    return {location, range.length - (shrinkBefore(references_.size()) - shrinkBeforeStart)};
  }
  const Place last = settled({end + shrinkBeforeStart, start.reference});
  return {location, last.position - shrinkBefore(last.reference) - location};
}

}  // namespace zeb::detail
