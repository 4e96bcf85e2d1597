#pragma once

#include <ZEBPlatform/Runtime/BorrowedPointerConversion.h>
#include <ZEBUtilities/Coding/ZEBEncoder.h>

namespace zeb {

/// Lets `send` pass encoders, by pointer.
template <>
struct ValueConversion<ZEBEncoder*> : detail::BorrowedPointerConversion<ZEBEncoder, '@'> {};

}  // namespace zeb
