#pragma once

#include <ZEBPlatform/Bundle/NSBundle.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb {

/// Keys of the host's Info.plist that the functions below read.
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

/// Keys of the dictionaries with which hosts configure code that uses this library.
extern const char* const ZEBConfigurationFontDictionaryKey;
extern const char* const ZEBConfigurationSourceShortURLLengthKey;
extern const char* const ZEBConfigurationSourceShortURLLengthHTTPSKey;
extern const char* const ZEBConfigurationShareSheetReimplementationEnabledKey;

// All of these return nil or 0 for a nil bundle. Info.plist values that are no text count as
// missing. They may be called from any thread.

/// "CFBundleVersion"; the short version when it is missing.
NSString zeb_bundleVersionString(const Ref<NSBundle>& bundle);
/// "CFBundleShortVersionString"; nil without it.
NSString zeb_bundleShortVersionString(const Ref<NSBundle>& bundle);

/// The bundle version string as one number, with eight bits for each of its first four numbers: 1.2
/// is 0x01020000. Every character that is no digit separates numbers, so that "7.25.1b2" has four.
/// Numbers above 255 count as 255, missing and empty ones as 0. Returns 0 without a version.
std::uint32_t zeb_bundleVersion(const Ref<NSBundle>& bundle);
/// The main bundle's version, determined once per process.
std::uint32_t zeb_mainBundleVersion();

/// "KXSharedApplicationGroupIdentifier"; nil without it.
NSString zeb_sharedApplicationGroupIdentifier(const Ref<NSBundle>& bundle);
/// "KXSharedKeychainOAuthIdentifier"; nil without it.
NSString zeb_sharedKeychainOAuthIdentifier(const Ref<NSBundle>& bundle);

/// "KXBetaMobileFeedbackURL"; empty without it. Read once per process: the first call decides the
/// result for all bundles.
NSString zeb_betaMobileFeedbackURL(const Ref<NSBundle>& bundle);

/// "KXPushEnvironment"; nil without it.
NSString zeb_pushEnvironment(const Ref<NSBundle>& bundle);
/// "CFBundleDisplayName", else "CFBundleName"; nil without both.
NSString zeb_clientDisplayName(const Ref<NSBundle>& bundle);
/// "YOVClientPrimaryScheme", else the first scheme under "CFBundleURLSchemes" in the first of
/// "CFBundleURLTypes" that has one; nil when there is none.
NSString zeb_clientPrimaryScheme(const Ref<NSBundle>& bundle);

}  // namespace zeb
