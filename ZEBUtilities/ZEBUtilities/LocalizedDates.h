#pragma once

// The module LocalizedDates: dates in the words of the user.

#include <ZEBUtilities/LocalizedDates/NSDate+ZEBLocalizedAdditions.h>
#include <ZEBUtilities/LocalizedDates/NSTimeZone+ZEBAdditions.h>
