#pragma once

// The module URLs: URLs from people and servers, their forms for people, and names of other
// scripts in their hosts.

#include <ZEBUtilities/URLs/NSString+UnicodeURLHelpers.h>
#include <ZEBUtilities/URLs/NSURL+UnicodeURL.h>
#include <ZEBUtilities/URLs/NSURL+ZEBAdditions.h>
#include <ZEBUtilities/URLs/UnicodeURLConversion.h>
