#pragma once

#include <ZEBPlatform/Foundation/NSSet.h>

namespace zeb {

/// Adds the object unless it is nil.
void zeb_addObjectIfNotNil(NSMutableSet set, const Value& object);

}  // namespace zeb
