#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb::detail {

enum class WireFormat : std::uint8_t { yearBeforeTime, yearAtEnd, rfc1123 };

/// Writes the text that an ICU formatter with the format's pattern would write, without one: the
/// patterns contain nothing that depends on a locale. Nil for a date that is not a number. Any
/// thread.
NSString wireText(WireFormat format, const NSDate& date);

}  // namespace zeb::detail
