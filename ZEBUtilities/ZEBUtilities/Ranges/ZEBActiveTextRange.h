#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSString.h>

namespace zeb {

/// A protocol of objects that mark a part of a text, such as a link.
class ZEBActiveTextRange {
 public:
  /// In UTF-16 code units.
  virtual NSRange rangeValue() const = 0;

 protected:
  ~ZEBActiveTextRange() = default;
};

/// Orders by location and then by length, so that of two ranges at one location the shorter one
/// comes first. The values are objects with a range: `ZEBActiveTextRange`s, boxed `NSRange`s, or
/// objects whose method `rangeValue` returns such a box. If one of them is not, the result is
/// ascending and one error line is logged.
NSComparisonResult ZEBActiveTextRangesCompare(const Value& a, const Value& b);

/// The array without members that overlap their neighbour. The array must be in the order of
/// `ZEBActiveTextRangesCompare`. Of two neighbours that overlap the earlier one is kept; if both
/// begin at one location, the longer one, or the first of equal ones. Deliberately only neighbours
/// are compared: a member that overlaps one two places before it stays. Empty ranges overlap
/// nothing, nor do objects without a range. Takes linear time. Nil on nil.
[[nodiscard]] NSArray ZEBActiveTextRangesByRemovingIntersections(const NSArray& ranges);

}  // namespace zeb
