#pragma once

#include <Keychain/ZEBKeychainConfiguration.h>
#include <ZEBPlatform/Memory/NSObject.h>

namespace zeb {

/// The configuration of hosts that have an Info.plist. It is read when the object is made.
/// Immutable; any thread.
class ZEBKeychainDefaultOrvaneConfiguration : public NSObject, public ZEBKeychainConfiguration {
 public:
  ZEBKeychainDefaultOrvaneConfiguration();

  /// Always "org.zebutilities.keychain".
  NSString serviceName() const override { return serviceName_; }
  /// The main bundle's "KXSharedKeychainOAuthIdentifier"; nil without it.
  NSString sharedAccessGroup() const override { return sharedAccessGroup_; }
  /// The main bundle's "AppIdentifierPrefix", which ends in a dot, with the bundle identifier
  /// appended; nil without the former. A missing bundle identifier deliberately appends "(null)".
  NSString defaultAccessGroup() const override { return defaultAccessGroup_; }

  /// Registered as "ZEBKeychainDefaultOrvaneConfiguration", with all functions here.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

 private:
  const NSString serviceName_;
  const NSString sharedAccessGroup_;
  const NSString defaultAccessGroup_;
};

}  // namespace zeb
