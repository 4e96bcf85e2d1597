#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Security/KeychainStore.h>

#include <cstddef>
#include <span>
#include <variant>

namespace zeb {

// Where the key comes from that seals the values of an embedded store.

/// A random key in a file of the store's own folder, made when the store is new.
struct KeychainKeyInFile {};
/// Derived from a passphrase, which must not be empty, by a deliberately slow function (scrypt, RFC
/// 7914), once per open store.
struct KeychainPassphrase {
  SecretBytes passphrase;
};
/// Supplied by the host, for example from a hardware token: fills the 32 bytes or returns why it
/// cannot. Called when the store is opened, on the opening thread; what it throws leaves `open`.
struct KeychainKeySource {
  Block<OSStatus(std::span<std::byte> key)> supply;
};
using KeychainMasterKey = std::variant<KeychainKeyInFile, KeychainPassphrase, KeychainKeySource>;

/// A store in a folder of the file system: an SQLite database, whose values are sealed with
/// AES-256-GCM before SQLite sees them. Each value is bound to its item's identity, so that a value
/// that was changed or moved to another item outside is found out (`errSecDecode`).
///
/// What it protects against: a person who gets the database alone, such as a copy or a backup
/// without the key, cannot read the values. Other users of the machine can read neither the
/// database nor the key file, because the store makes them for their owner alone. It refuses a key
/// file that others may read, but not a database: copies keep the permissions they were given.
///
/// What it does not protect against:
///   - A key file beside the data protects against nobody who can read the user's files: every
///     program of the user, root, and thieves of an unencrypted disk. Use a passphrase or a key of
///     the host's own against those.
///   - Programs that read this process's memory: the key stays there while the store is open.
///   - Attributes are not sealed. A reader of the database sees which accounts there are, and a
///     writer can change attributes that do not belong to the identity, remove items, or put back
///     an older database with older values.
///   - The file system and the disk keep old copies of what was overwritten. They are sealed, too.
///
/// Any thread; searches run in parallel. Several processes may use one folder. Two stores that are
/// open in one folder share their connections and see each other's changes at once. The folder must
/// be on a local file system. If other processes keep the database locked for more than five
/// seconds, a call fails with `errSecNotAvailable` and has done nothing.
///
/// Each call, also one that reads, works on the database that is in the folder when the call
/// begins. If the database was removed or moved away, the calls fail with `errSecNotAvailable`; if
/// another store took its place, with `errSecInvalidKeychain`, and the folder has to be opened
/// again. A copy of the same store that was put back is used without that.
///
/// The opening of a folder that is not open yet in the process, and a fork, wait until the running
/// calls of all stores have ended. After a fork both processes can go on using the store; the child
/// of a program with several threads should start another program soon, as always. A host's own
/// fork handlers (pthread_atfork) must not use the store. Children that are made without these
/// handlers (`_Fork`, `clone`) must not use it either.
class EmbeddedKeychainStore : public KeychainStore {
 public:
  /// Opens or makes the store in `folder`, which is made for its owner alone (mode 0700) with its
  /// missing parents. A relative path counts from the current folder at this moment. Nil means the
  /// folder "zebutilities/keychain" in the user's data folder
  /// (XDG_DATA_HOME, else .local/share in the home folder). Nil if that fails, and `status` says
  /// why; then no file that exists was changed. If the process is killed while it makes a store, a
  /// temporary file ".zeb-…" without secrets of the user may be left over. If the database is
  /// missing, an empty one is made, also beside an old key file:
  ///   - `errSecAuthFailed`: the master key is not the store's, or the key file is missing or does
  ///     not contain a key.
  ///   - `errSecInvalidKeychain`: the database is damaged, is not a store, or has a newer format.
  ///   - `errSecNotAvailable`: the folder cannot be reached or can be changed by others; or a file
  ///     in it cannot be reached, is a link, belongs to another user, or can be changed, in the
  ///     case of the key file also read, by others.
  ///   - `errSecWrPerm`, `errSecDiskFull`: a new store cannot be written.
  ///   - `errSecParam`: the passphrase or the path is empty, or there is no source to call.
  ///   - What a `KeychainKeySource` returned.
  static Ref<EmbeddedKeychainStore> open(const NSString& folder, KeychainMasterKey masterKey,
                                         OSStatus* status = nullptr);
};

}  // namespace zeb
