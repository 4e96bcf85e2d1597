#pragma once

#include <ZEBPlatform/Security/KeychainCipherPrivate.h>
#include <ZEBPlatform/Security/SQLiteConnectionPrivate.h>
#include <ZEBPlatform/Security/SecBase.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zeb {

/// What a store's file says about its master key. None of it is secret.
struct KeychainKeyFacts {
  /// For the derivation from a passphrase; empty if the key is not derived from one.
  std::vector<std::byte> salt;
  // scrypt's parameters (RFC 7914): N, r and p.
  std::uint64_t cost = 0;
  std::uint64_t blockSize = 0;
  std::uint64_t parallelism = 0;
  /// No bytes, sealed. As its nonce is random, it also tells stores apart.
  std::vector<std::byte> check;

  static constexpr std::string_view checkIdentity = "The master key of a keychain store";
};

/// Makes a new store's file at the path, complete or not at all. EEXIST is `errSecDuplicateItem`.
OSStatus writeNewDatabaseFile(const std::string& path, const KeychainKeyFacts& facts);

enum class DatabaseFile : std::uint8_t { missing, present };

/// Whether there is a file, judged by its header without SQLite, which might write. If it is
/// there, `errSecInvalidKeychain` unless it is a store of this format, and `errSecNotAvailable` if
/// it may not be read or other users may write it. No connection of this process may be open,
/// because closing any descriptor of the file would release their locks.
OSStatus examineDatabaseFile(const std::string& path, DatabaseFile& found);

/// Reads the facts and checks that the tables are those of this format.
OSStatus readKeyFacts(SQLiteConnection& connection, KeychainKeyFacts& facts);

/// What an error number of the system means for the place as a whole.
OSStatus statusOfErrorNumber(int number) noexcept;
/// The same after an attempt to add a file to the folder.
OSStatus statusOfWritingError(int number) noexcept;

}  // namespace zeb
