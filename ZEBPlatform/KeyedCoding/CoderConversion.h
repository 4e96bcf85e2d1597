#pragma once

#include <ZEBPlatform/KeyedCoding/NSCoder.h>
#include <ZEBPlatform/Runtime/BorrowedPointerConversion.h>

namespace zeb {

/// Lets `send` pass coders, by pointer.
template <>
struct ValueConversion<NSCoder*> : detail::BorrowedPointerConversion<NSCoder, '@'> {};

}  // namespace zeb
