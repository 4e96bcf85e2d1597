#pragma once

// The module Dates: additions to dates.

#include <ZEBUtilities/Dates/NSDate+ZEBAdditions.h>
