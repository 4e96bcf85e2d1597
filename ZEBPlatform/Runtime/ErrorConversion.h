#pragma once

#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Runtime/BorrowedPointerConversion.h>

namespace zeb {

/// Lets `send` pass the place for an error, so that the method fills the caller's own variable.
template <>
struct ValueConversion<NSError*> : detail::BorrowedPointerConversion<NSError, '^'> {};

}  // namespace zeb
