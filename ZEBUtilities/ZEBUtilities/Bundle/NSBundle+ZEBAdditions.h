#pragma once

#include <ZEBPlatform/Bundle/NSBundle.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb {

/// Keys of the host's Info.plist that are read below.
extern const char* const ZEBBundleSharedApplicationGroupIdentifierKey;
extern const char* const ZEBBundleSharedKeychainOAuthIdentifierKey;
extern const char* const ZEBBundleBetaMobileFeedbackURLKey;
extern const char* const ZEBBundlePushEnvironmentKey;
extern const char* const ZEBBundleClientPrimarySchemeKey;
extern const char* const ZEBBundleShortVersionKey;
extern const char* const ZEBBundleDisplayNameKey;
extern const char* const ZEBBundleNameKey;
extern const char* const ZEBBundleURLTypesKey;
extern const char* const ZEBBundleURLSchemesKey;

/// Keys of the dictionaries that hosts configure the library's users with.
extern const char* const ZEBConfigurationFontDictionaryKey;
extern const char* const ZEBConfigurationSourceShortURLLengthKey;
extern const char* const ZEBConfigurationSourceShortURLLengthHTTPSKey;
extern const char* const ZEBConfigurationShareSheetReimplementationEnabledKey;

// All of these take a nil bundle, and answer nil or 0 for it. Info.plist values of another kind than text
// count as missing. Any thread.

/// "CFBundleVersion"; without it, the short version.
NSString zeb_bundleVersionString(const Ref<NSBundle>& bundle);
/// "CFBundleShortVersionString"; nil without it.
NSString zeb_bundleShortVersionString(const Ref<NSBundle>& bundle);

/// The bundle version string in one number, eight bits for each of its first four numbers: 1.2 is
/// 0x01020000. Every character that is no digit separates numbers, so that "7.25.1b2" has four; numbers
/// above 255 count as 255, missing and empty ones as 0. 0 without a version.
std::uint32_t zeb_bundleVersion(const Ref<NSBundle>& bundle);
/// Of the main bundle, found once per process.
std::uint32_t zeb_mainBundleVersion();

/// "KXSharedApplicationGroupIdentifier"; nil without it.
NSString zeb_sharedApplicationGroupIdentifier(const Ref<NSBundle>& bundle);
/// "KXSharedKeychainOAuthIdentifier"; nil without it.
NSString zeb_sharedKeychainOAuthIdentifier(const Ref<NSBundle>& bundle);

/// "KXBetaMobileFeedbackURL", empty without it. Read once per process: what the first bundle that is asked
/// says is the answer for good, for all bundles.
NSString zeb_betaMobileFeedbackURL(const Ref<NSBundle>& bundle);

/// "KXPushEnvironment"; nil without it.
NSString zeb_pushEnvironment(const Ref<NSBundle>& bundle);
/// "CFBundleDisplayName", else "CFBundleName"; nil without both.
NSString zeb_clientDisplayName(const Ref<NSBundle>& bundle);
/// "YOVClientPrimaryScheme", else the first scheme under "CFBundleURLSchemes" in the first of
/// "CFBundleURLTypes" that has one; nil without any.
NSString zeb_clientPrimaryScheme(const Ref<NSBundle>& bundle);

}  // namespace zeb
