#include <ZEBUtilities/Collections/NSMutableOrderedSet+ZEBAdditions.h>

namespace zeb {

namespace {

/// The test may change the ordered set; so each member is kept alive, and the one that passes is
/// searched for again.
Value firstMemberPassing(const NSOrderedSet& set, FunctionView<bool(const Value& member)> test) {
  for (std::size_t index = 0; index < set.count(); ++index) {
    const Value member = set.objectAtIndex(index);
    if (test(member)) return member;
  }
  return {};
}

}  // namespace

void zeb_moveObjectIfNotNil(NSMutableOrderedSet set, const Value& object, std::size_t index,
                            FunctionView<bool(const Value& member)> passingTest) {
  if (object.isNil()) return;
  const Value member = passingTest ? firstMemberPassing(set, passingTest) : object;
  const std::size_t from = set.indexOfObject(member);
  if (from != NSNotFound) set.moveObjectAtIndex(from, index);
}

}  // namespace zeb
