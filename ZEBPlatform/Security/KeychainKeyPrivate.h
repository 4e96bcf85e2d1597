#pragma once

#include <ZEBPlatform/Security/EmbeddedKeychainStore.h>
#include <ZEBPlatform/Security/KeychainDatabaseFilePrivate.h>

#include <string>

namespace zeb {

/// Finds a store's master key.
class KeychainKeyFinder {
 public:
  KeychainKeyFinder(KeychainMasterKey masterKey, std::string keyFile)
      : masterKey_(std::move(masterKey)), keyFile_(std::move(keyFile)) {}

  /// Asks the host's source, if it has the key. To be called first, while nothing is locked,
  /// because the source may do anything.
  OSStatus askSource();
  /// The key for a new store and the facts to write into it. Makes the key file if it is missing.
  OSStatus makeNew(SecretBytes& key, KeychainKeyFacts& facts);
  /// The key of the store with these facts; `errSecAuthFailed` if it is another one or missing.
  OSStatus find(const KeychainKeyFacts& facts, SecretBytes& key);

 private:
  OSStatus readKeyFile(SecretBytes& key);
  OSStatus makeKeyFile(SecretBytes& key);

  KeychainMasterKey masterKey_;
  std::string keyFile_;
  SecretBytes supplied_;
};

}  // namespace zeb
