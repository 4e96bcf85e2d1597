#include <ZEBUtilities/Device/ZEBOperatingSystem.h>

namespace zeb {

constinit const NSOperatingSystemVersion kOSVersion10{10, 0, 0};
constinit const NSOperatingSystemVersion kOSVersion11{11, 0, 0};

bool ZEBIsIOS10OrGreater() {
  static const bool isAtLeast =
      NSProcessInfo::processInfo()->isOperatingSystemAtLeastVersion(kOSVersion10);
  return isAtLeast;
}

bool ZEBIsIOS11OrGreater() {
  static const bool isAtLeast =
      NSProcessInfo::processInfo()->isOperatingSystemAtLeastVersion(kOSVersion11);
  return isAtLeast;
}

}  // namespace zeb
