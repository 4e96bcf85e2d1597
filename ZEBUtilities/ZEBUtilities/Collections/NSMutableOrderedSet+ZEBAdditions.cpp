#include <ZEBUtilities/Collections/NSMutableOrderedSet+ZEBAdditions.h>

namespace zeb {

namespace {

/// The index of the first member that passes, or NSNotFound. The test may change the ordered set;
/// so each member is kept alive, and searched for again if it is no longer in its place.
std::size_t indexOfFirstMemberPassing(const NSOrderedSet& set,
                                      FunctionView<bool(const Value& member)> test) {
  for (std::size_t index = 0; index < set.count(); ++index) {
    const Value member = set.objectAtIndex(index);
    if (!test(member)) continue;
    const bool isInPlace = index < set.count() && set.objectAtIndex(index).isIdenticalTo(member);
    return isInPlace ? index : set.indexOfObject(member);
  }
  return NSNotFound;
}

}  // namespace

void zeb_moveObjectIfNotNil(NSMutableOrderedSet set, const Value& object, std::size_t index,
                            FunctionView<bool(const Value& member)> passingTest) {
  if (object.isNil()) return;
  const std::size_t from =
      passingTest ? indexOfFirstMemberPassing(set, passingTest) : set.indexOfObject(object);
  if (from != NSNotFound) set.moveObjectAtIndex(from, index);
}

}  // namespace zeb
