#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>

namespace zeb {

/// A new mutable array with those elements that a property list can hold, in order and to any
/// depth: strings, numbers, data and dates themselves, arrays cleaned by this function,
/// dictionaries by `zeb_dictionaryByRemovingInvalidPropertyListEntries`. Nil on nil.
[[nodiscard]] NSMutableArray zeb_arrayByRemovingInvalidPropertyListObjects(const NSArray& array);

}  // namespace zeb
