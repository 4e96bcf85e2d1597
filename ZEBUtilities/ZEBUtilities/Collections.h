#pragma once

// The module Collections: typed reading of dictionaries, additions to collections, the circular
// buffer.

#include <ZEBUtilities/Collections/Dictionary+ZEBAdditions.h>
#include <ZEBUtilities/Collections/ElementCall.h>
#include <ZEBUtilities/Collections/NSArray+ZEBAdditions.h>
#include <ZEBUtilities/Collections/NSDictionary+ZEBAdditions.h>
#include <ZEBUtilities/Collections/NSMutableArray+ZEBAdditions.h>
#include <ZEBUtilities/Collections/NSMutableDictionary+ZEBAdditions.h>
#include <ZEBUtilities/Collections/NSMutableOrderedSet+ZEBAdditions.h>
#include <ZEBUtilities/Collections/NSMutableSet+ZEBAdditions.h>
#include <ZEBUtilities/Collections/PathElementKeys.h>
#include <ZEBUtilities/Collections/ZEBCircularFIFOBuffer.h>
