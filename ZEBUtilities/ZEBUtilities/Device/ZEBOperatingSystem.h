#pragma once

#include <ZEBPlatform/Process/NSProcessInfo.h>

namespace zeb {

extern const NSOperatingSystemVersion kOSVersion10;  ///< 10.0.0
extern const NSOperatingSystemVersion kOSVersion11;  ///< 11.0.0

/// Whether the operating system's version is at least `kOSVersion10` or `kOSVersion11`. On Linux
/// that is the kernel's version, see `NSProcessInfo::operatingSystemVersion`. Each determines its
/// result at the first call and keeps it. Any thread.
bool ZEBIsIOS10OrGreater();
bool ZEBIsIOS11OrGreater();

}  // namespace zeb
