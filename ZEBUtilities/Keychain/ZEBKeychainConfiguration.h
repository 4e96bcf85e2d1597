#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

namespace zeb {

/// A protocol (see `ProtocolRef`) that tells a `ZEBKeychain` where its passwords are. It is asked
/// once, when the keychain is made.
class ZEBKeychainConfiguration {
 public:
  virtual NSString serviceName() const = 0;
  /// Optional: the access group that the application shares with its extensions.
  virtual NSString sharedAccessGroup() const { return nullptr; }
  /// Optional: the application's own access group. Should be the group that the keychain uses where
  /// none is given; see `ZEBKeychain`.
  virtual NSString defaultAccessGroup() const { return nullptr; }

 protected:
  ~ZEBKeychainConfiguration() = default;
};

}  // namespace zeb
