#pragma once

#include <ZEBPlatform/Concurrency/detail/SnapshotPointer.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Security/KeychainStore.h>

namespace zeb::detail {

/// What `SecKeychainSetStore` and `SecKeychainSetDefaultAccessGroup` chose; nil means the default.
struct KeychainSettings {
  Ref<KeychainStore> store;
  NSString accessGroup;
};
using KeychainSettingsPin = SnapshotPointer<KeychainSettings>::Pin;

/// Pins settings whose store is not nil, for the duration of one call. Opens the default store if
/// that is needed; if it cannot be opened, returns why, and the next call tries again.
OSStatus pinKeychain(KeychainSettingsPin& pin);

/// The group that the settings mean; never nil.
const NSString& accessGroupOf(const KeychainSettings& settings);

}  // namespace zeb::detail
