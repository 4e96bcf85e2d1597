#pragma once

// The module Collections: typed reading of dictionaries, additions to collections, the circular
// buffer.

#include <ZEBUtilities/Collections/Dictionary+ZEBAdditions.h>
#include <ZEBUtilities/Collections/NSArray+ZEBAdditions.h>
#include <ZEBUtilities/Collections/NSDictionary+ZEBAdditions.h>
#include <ZEBUtilities/Collections/NSMutableDictionary+ZEBAdditions.h>
#include <ZEBUtilities/Collections/PathElementKeys.h>
#include <ZEBUtilities/Collections/ZEBCircularFIFOBuffer.h>
