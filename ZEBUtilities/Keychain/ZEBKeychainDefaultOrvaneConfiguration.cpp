#include <Keychain/ZEBKeychainDefaultOrvaneConfiguration.h>
#include <ZEBPlatform/Bundle/NSBundle.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Bundle/NSBundle+ZEBAdditions.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>

namespace zeb {

namespace {

NSString ownAccessGroup(const Ref<NSBundle>& bundle) {
  const NSString prefix(bundle->objectForInfoDictionaryKey("AppIdentifierPrefix"));
  if (prefix.isNil()) return nullptr;
  return prefix + NSString::stringWithFormat("%@", bundle->bundleIdentifier());
}

}  // namespace

ZEBKeychainDefaultOrvaneConfiguration::ZEBKeychainDefaultOrvaneConfiguration()
    : serviceName_(NSString(ZEBUtilitiesIdentifierPrefix) + ".keychain"),
      sharedAccessGroup_(zeb_sharedKeychainOAuthIdentifier(NSBundle::mainBundle())),
      defaultAccessGroup_(ownAccessGroup(NSBundle::mainBundle())) {}

Class* ZEBKeychainDefaultOrvaneConfiguration::runtimeClass() {
  using Self = ZEBKeychainDefaultOrvaneConfiguration;
  static Class* const cls =
      registerClass("ZEBKeychainDefaultOrvaneConfiguration",
                    {
                        classMethod("init", [] { return makeRef<Self>(); }),
                        classMethod("new", [] { return makeRef<Self>(); }),
                        property("serviceName", &Self::serviceName),
                        property("sharedAccessGroup", &Self::sharedAccessGroup),
                        property("defaultAccessGroup", &Self::defaultAccessGroup),
                    });
  return cls;
}

}  // namespace zeb
