#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Security/KeychainStore.h>

#include <cstddef>
#include <span>
#include <variant>

namespace zeb {

/// Where the key comes from that seals the values of an embedded store.
struct KeychainKeyInFile {
};  ///< a random key in the store's own folder, made when the store is new
/// Derived from a passphrase by a deliberately slow function (scrypt), once per open store.
struct KeychainPassphrase {
  SecretBytes passphrase;
};
/// Supplied by the host, for example from a hardware token: fills the 32 bytes or returns why it
/// cannot. Called when the store is opened, on the opening thread.
struct KeychainKeySource {
  Block<OSStatus(std::span<std::byte> key)> supply;
};
using KeychainMasterKey = std::variant<KeychainKeyInFile, KeychainPassphrase, KeychainKeySource>;

class EmbeddedKeychainStore : public KeychainStore {
 public:
  /// Opens or makes the store in `folder`; nil means the folder "zebutilities/keychain" in the
  /// user's data folder (XDG_DATA_HOME, else .local/share in the home folder). Nil if that fails,
  /// and `status` says why.
  static Ref<EmbeddedKeychainStore> open(const NSString& folder, KeychainMasterKey masterKey,
                                         OSStatus* status = nullptr);
};

}  // namespace zeb
