#pragma once

// The module Dates: additions to dates, version numbers.

#include <ZEBUtilities/Dates/NSDate+ZEBAdditions.h>
#include <ZEBUtilities/Dates/ZEBVersion.h>
