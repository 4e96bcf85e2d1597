#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBUtilities/Bundle/NSBundle+ZEBAdditions.h>

#include <algorithm>
#include <string_view>

namespace zeb {

const char* const ZEBBundleSharedApplicationGroupIdentifierKey =
    "KXSharedApplicationGroupIdentifier";
const char* const ZEBBundleSharedKeychainOAuthIdentifierKey = "KXSharedKeychainOAuthIdentifier";
const char* const ZEBBundleBetaMobileFeedbackURLKey = "KXBetaMobileFeedbackURL";
const char* const ZEBBundlePushEnvironmentKey = "KXPushEnvironment";
const char* const ZEBBundleClientPrimarySchemeKey = "YOVClientPrimaryScheme";
const char* const ZEBBundleShortVersionKey = "CFBundleShortVersionString";
const char* const ZEBBundleDisplayNameKey = "CFBundleDisplayName";
const char* const ZEBBundleNameKey = "CFBundleName";
const char* const ZEBBundleURLTypesKey = "CFBundleURLTypes";
const char* const ZEBBundleURLSchemesKey = "CFBundleURLSchemes";

const char* const ZEBConfigurationFontDictionaryKey = "ConfigurationFontDictionaryKey";
const char* const ZEBConfigurationSourceShortURLLengthKey = "ConfigurationShortURLLength";
const char* const ZEBConfigurationSourceShortURLLengthHTTPSKey = "ConfigurationShortURLLengthHTTPS";
const char* const ZEBConfigurationShareSheetReimplementationEnabledKey =
    "ConfigurationShareSheetReimplementationEnabled";

namespace {

NSString textForKey(const Ref<NSBundle>& bundle, std::string_view key) {
  return bundle ? NSString(bundle->objectForInfoDictionaryKey(StringKey(key))) : NSString();
}

std::uint32_t packedVersion(const NSString& version) {
  std::uint32_t packed = 0;
  std::size_t place = 0;
  for (int component = 0; component < 4; ++component) {
    std::uint32_t number = 0;
    for (; place < version.length(); ++place) {
      const char16_t unit = version.characterAtIndex(place);
      if (unit < u'0' || unit > u'9') break;
      number = std::min<std::uint32_t>(number * 10 + (unit - u'0'), 255);
    }
    ++place;  // skips the separator
    packed = packed << 8 | number;
  }
  return packed;
}

}  // namespace

NSString zeb_bundleVersionString(const Ref<NSBundle>& bundle) {
  const NSString version = textForKey(bundle, kCFBundleVersionKey);
  return version.isNil() ? zeb_bundleShortVersionString(bundle) : version;
}

NSString zeb_bundleShortVersionString(const Ref<NSBundle>& bundle) {
  return textForKey(bundle, ZEBBundleShortVersionKey);
}

std::uint32_t zeb_bundleVersion(const Ref<NSBundle>& bundle) {
  return packedVersion(zeb_bundleVersionString(bundle));
}

std::uint32_t zeb_mainBundleVersion() {
  static const std::uint32_t version = zeb_bundleVersion(NSBundle::mainBundle());
  return version;
}

NSString zeb_sharedApplicationGroupIdentifier(const Ref<NSBundle>& bundle) {
  return textForKey(bundle, ZEBBundleSharedApplicationGroupIdentifierKey);
}

NSString zeb_sharedKeychainOAuthIdentifier(const Ref<NSBundle>& bundle) {
  return textForKey(bundle, ZEBBundleSharedKeychainOAuthIdentifierKey);
}

NSString zeb_betaMobileFeedbackURL(const Ref<NSBundle>& bundle) {
  if (!bundle) return nullptr;
  static const detail::NeverDestroyed<NSString> url([&bundle] {
    const NSString found = textForKey(bundle, ZEBBundleBetaMobileFeedbackURLKey);
    return found.isNil() ? NSString("") : found;
  }());
  return *url;
}

NSString zeb_pushEnvironment(const Ref<NSBundle>& bundle) {
  return textForKey(bundle, ZEBBundlePushEnvironmentKey);
}

NSString zeb_clientDisplayName(const Ref<NSBundle>& bundle) {
  const NSString name = textForKey(bundle, ZEBBundleDisplayNameKey);
  return name.isNil() ? textForKey(bundle, ZEBBundleNameKey) : name;
}

NSString zeb_clientPrimaryScheme(const Ref<NSBundle>& bundle) {
  const NSString scheme = textForKey(bundle, ZEBBundleClientPrimarySchemeKey);
  if (!scheme.isNil() || !bundle) return scheme;
  const NSArray types(bundle->objectForInfoDictionaryKey(NSString(ZEBBundleURLTypesKey)));
  for (const Value& type : types) {
    const NSArray schemes(NSDictionary(type).objectForKey(NSString(ZEBBundleURLSchemesKey)));
    const NSString first(schemes.firstObject());
    if (!first.isNil()) return first;
  }
  return nullptr;
}

}  // namespace zeb
