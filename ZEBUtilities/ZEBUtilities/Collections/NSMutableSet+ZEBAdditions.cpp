#include <ZEBUtilities/Collections/NSMutableSet+ZEBAdditions.h>

namespace zeb {

void zeb_addObjectIfNotNil(NSMutableSet set, const Value& object) {
  if (!object.isNil()) set.addObject(object);
}

}  // namespace zeb
