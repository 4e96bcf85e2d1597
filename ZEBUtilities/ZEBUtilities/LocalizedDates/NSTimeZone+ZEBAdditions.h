#pragma once

#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/Ref.h>
#include <ZEBPlatform/Text/NSTimeZone.h>

namespace zeb {

/// How far the zone is from UTC at this date: sign, two digits of hours and two of minutes, such as
/// "+0100" or "-0530", and two digits of seconds in the few historical cases that have them. Nil if
/// an argument is nil or the date is not a number.
///
/// Waits for the time-zone queue, so it must not be called from a block on that queue.
NSString zeb_utcOffsetOfDate(const NSDate& date, const Ref<NSTimeZone>& timezone);

/// The same for now and the default time zone.
NSString zeb_utcOffsetFromCurrentTime();

/// The serial queue on which the one formatter of these functions is used. Its label is
/// "NSTimeZone+ZEBAdditions".
const dispatch_queue_t& _zeb_timezoneQueue();

}  // namespace zeb
