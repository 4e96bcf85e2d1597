#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>

namespace zeb {

/// A new mutable array with only what a property list can hold, to any depth, in order: strings,
/// numbers, data and dates as they are, arrays cleaned by this same method, dictionaries by
/// `zeb_dictionaryByRemovingInvalidPropertyListEntries`. Nil on nil.
NSMutableArray zeb_arrayByRemovingInvalidPropertyListObjects(const NSArray& array);

}  // namespace zeb
