#include <ZEBPlatform/Bundle/NSBundle.h>
#include <ZEBUtilities/Bundle/ZEBProcessEnvironment.h>

namespace zeb {

bool ZEBAmIRunningInAnExtension() {
  static const bool isExtension =
      NSBundle::mainBundle()->objectForInfoDictionaryKey("NSExtension").isDictionary();
  return isExtension;
}

bool ZEBAmIBeingUITested() {
  static const bool isTested =
      NSBundle::mainBundle()->objectForInfoDictionaryKey("VUITTesting").boolValue();
  return isTested;
}

bool ZEBAmIBeingTested() { return ZEBAmIBeingUITested(); }

}  // namespace zeb
