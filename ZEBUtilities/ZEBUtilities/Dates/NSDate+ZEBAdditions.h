#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>

namespace zeb {

/// The moment so many milliseconds after 1 January 1970 UTC (computed as milliseconds × 0.001 seconds).
NSDate zeb_dateFromMilliseconds(double milliseconds) noexcept;

}  // namespace zeb
