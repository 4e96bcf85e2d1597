#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSString.h>

namespace zeb {

/// The moment that a timestamp of the service names, such as "Wed Aug 27 13:08:45 +0000 2008". Nil
/// if the text begins with none. The locale and time zone of the process have no influence. Any
/// thread, as long as a mutable text does not change meanwhile.
///
/// The text is read as `strptime` reads the pattern "%a %b %d %H:%M:%S %z %Y" in the C locale:
/// - Names of days and months are abbreviated or full, in upper or lower case. The name of the day
///   need not be the right one.
/// - Between the parts can be any amount of white space, or none.
/// - The offset is "Z", or a sign and two or four digits, with or without a colon between hours and
///   minutes.
/// - Seconds go up to 61. A day that its month does not have is counted on into the next month.
/// - What follows the year is ignored, as is everything from a zero character on.
[[nodiscard]] NSDate zeb_dateFromStringFormattedLikeHTTPDate(const NSString& string);

}  // namespace zeb
