#include <ZEBPlatform/Geometry/NSValue.h>
#include <ZEBPlatform/Logging/OLGLogging.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>
#include <ZEBUtilities/Ranges/ZEBActiveTextRange.h>

#include <algorithm>
#include <compare>
#include <optional>
#include <vector>

namespace zeb {

namespace {

std::optional<NSRange> rangeOf(const Value& value) {
  if (const auto* object = dynamic_cast<const ZEBActiveTextRange*>(value.objectPointer())) {
    return object->rangeValue();
  }
  const SEL rangeValue = "rangeValue"_sel;
  const bool isAnswered = value.isObject() && respondsToSelector(value, rangeValue);
  const Value boxedRange = isAnswered ? send(value, rangeValue) : value;
  if (const NSRange* range = unboxed<NSRange>(boxedRange)) return *range;
  return std::nullopt;
}

NSComparisonResult compareWords(std::size_t a, std::size_t b) noexcept {
  return a < b ? NSOrderedAscending : a > b ? NSOrderedDescending : NSOrderedSame;
}

/// Whether some unit belongs to both ranges. A range may reach past the largest location.
bool intersect(const NSRange& a, const NSRange& b) noexcept {
  const NSRange& first = a.location <= b.location ? a : b;
  const NSRange& second = a.location <= b.location ? b : a;
  return second.length > 0 && second.location - first.location < first.length;
}

}  // namespace

NSComparisonResult ZEBActiveTextRangesCompare(const Value& a, const Value& b) {
  const std::optional<NSRange> rangeOfA = rangeOf(a);
  const std::optional<NSRange> rangeOfB = rangeOf(b);
  if (rangeOfA && rangeOfB) {
    const NSComparisonResult byLocation = compareWords(rangeOfA->location, rangeOfB->location);
    return byLocation ? byLocation : compareWords(rangeOfA->length, rangeOfB->length);
  }
  const char* const channel = ZEBUtilitiesLoggingChannel_Generic;
  if (OLGCanLog(nullptr, OLGLevelError, channel)) {
    OLGLogEx(nullptr, OLGLevelError, channel, "ZEBUtilities/ZEBUtilities/ZEBActiveTextRange",
             "ZEBActiveTextRangesCompare", __LINE__, "%@ comparing with %@", a, b);
  }
  return NSOrderedAscending;
}

NSArray ZEBActiveTextRangesByRemovingIntersections(const NSArray& ranges) {
  if (ranges.count() < 2) return ranges.copy();
  std::vector<Value> kept;
  kept.reserve(ranges.count());
  NSRange lastRange;
  for (const Value& member : ranges) {
    const NSRange range = rangeOf(member).value_or(NSRange());
    if (!kept.empty() && intersect(lastRange, range)) {
      if (lastRange.location != range.location || lastRange.length >= range.length) continue;
      kept.pop_back();
    }
    kept.push_back(member);
    lastRange = range;
  }
  return NSArray::arrayWithObjects(kept);
}

}  // namespace zeb
