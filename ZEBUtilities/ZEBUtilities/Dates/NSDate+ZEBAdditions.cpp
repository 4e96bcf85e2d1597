#include <ZEBUtilities/Dates/NSDate+ZEBAdditions.h>

namespace zeb {

NSDate zeb_dateFromMilliseconds(double milliseconds) noexcept {
  return NSDate::dateWithTimeIntervalSince1970(milliseconds * 0.001);
}

}  // namespace zeb
