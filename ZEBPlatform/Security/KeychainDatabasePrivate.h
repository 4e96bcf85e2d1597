#pragma once

#include <ZEBPlatform/Linux/detail/PrivateFiles.h>
#include <ZEBPlatform/Security/KeychainDatabaseFilePrivate.h>
#include <ZEBPlatform/Security/KeychainKeyPrivate.h>
#include <ZEBPlatform/Security/SQLiteConnectionPrivate.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace zeb {

/// The connections of this process to one store's file: one that writes and a few that read. All
/// stores that are open in one folder share them. Any thread.
///
/// SQLite keeps process-wide records of its file locks. A forked child would believe these records
/// although it does not own the locks. Therefore all connections are closed before a fork, which
/// waits for calls that are running, and opened again at the next use, in both processes. The same
/// is done before a file is examined without SQLite: closing any descriptor of a file releases all
/// locks that the process has on it.
class KeychainDatabase : public std::enable_shared_from_this<KeychainDatabase> {
 public:
  enum class Access : std::uint8_t { reads, writes };
  class Lease;

  /// Further threads that read wait for one of these.
  static constexpr std::size_t maxReaders = 8;
  /// The one that writes has the last place.
  static constexpr std::size_t maxConnections = maxReaders + 1;

  /// Opens the store in the folder, which exists and has a canonical path, or makes a new one, and
  /// finds its key.
  static OSStatus open(const std::string& folder, KeychainKeyFinder& finder, SecretBytes& key,
                       std::shared_ptr<KeychainDatabase>& database);

  KeychainDatabase(const KeychainDatabase&) = delete;
  KeychainDatabase& operator=(const KeychainDatabase&) = delete;

 private:
  struct Registry;
  class Opening;
  struct Closer;
  using Connection = std::unique_ptr<SQLiteConnection>;

  explicit KeychainDatabase(std::string path);

  static Registry& registry();
  static void beforeFork();
  static void afterForkInParent();
  static void afterForkInChild();
  /// Opens a connection, which reads only if the folder permits no more.
  static OSStatus connect(const std::string& path, Connection& connection, KeychainKeyFacts& facts);
  /// Opens the file, which is examined already.
  static OSStatus connectFirst(const std::string& path, std::shared_ptr<KeychainDatabase>& result);

  const std::string path_;
  // Constant once the database is registered.
  FileIdentity file_;
  KeychainKeyFacts facts_;

  // The following belong to the registry's lock.
  bool isReplaced_ = false;   ///< the file is gone, and the folder may hold another one
  std::uint32_t leased_ = 0;  ///< one bit for each place
  /// In their places while they are not leased.
  std::array<Connection, maxConnections> connections_;
};

/// A connection for one call.
class KeychainDatabase::Lease {
 public:
  /// Waits until a connection may be used.
  Lease(KeychainDatabase& database, Access access);
  Lease(const Lease&) = delete;
  Lease& operator=(const Lease&) = delete;
  ~Lease();

  /// Opens the connection if it is not open, and checks it.
  OSStatus prepare();
  SQLiteConnection& connection() noexcept { return *connection_; }
  /// The connection's place, below `maxConnections`. No other lease of the database has it.
  std::size_t place() const noexcept { return place_; }

 private:
  KeychainDatabase& database_;
  std::size_t place_;
  Connection connection_;
};

}  // namespace zeb
