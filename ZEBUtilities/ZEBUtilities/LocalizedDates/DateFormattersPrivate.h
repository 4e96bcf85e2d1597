#pragma once

#include <ZEBPlatform/Memory/Ref.h>
#include <ZEBPlatform/Text/NSDateFormatter.h>

#include <cstddef>

namespace zeb::detail {

/// The kept formatters. Those before `longDate` follow changes of the system's time zone.
enum class DateFormat : std::size_t {
  mediumNoTime,
  mediumNoYear,
  medium,
  longWithTime,
  longNoYear,
  shortDate,
  shortRelativeWithTime,
  shortTime,
  longDate,
  weekdayWithTime,
};

/// The formatter of this kind, made at its first use. Only on the date queue.
const NSDateFormatter& dateFormatter(DateFormat format);
/// Drops all formatters. Only on the date queue.
void dropDateFormatters();

}  // namespace zeb::detail
