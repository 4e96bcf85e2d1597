#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>

namespace zeb {

/// The moment that is `milliseconds` × 0.001 seconds after 1 January 1970 UTC.
NSDate zeb_dateFromMilliseconds(double milliseconds) noexcept;

}  // namespace zeb
