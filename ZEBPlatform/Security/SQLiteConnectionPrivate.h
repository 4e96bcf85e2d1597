#pragma once

#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Security/SecBase.h>
#include <sqlite3.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

namespace zeb {

struct SQLiteCloser {
  void operator()(sqlite3* database) const noexcept { sqlite3_close_v2(database); }
  void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};
using SQLiteStatement = std::unique_ptr<sqlite3_stmt, SQLiteCloser>;

/// One connection to a database file, and the statements that were prepared on it. One thread at a
/// time.
class SQLiteConnection {
 public:
  SQLiteConnection() = default;
  SQLiteConnection(const SQLiteConnection&) = delete;
  SQLiteConnection& operator=(const SQLiteConnection&) = delete;

  /// Opens a file that exists and is no link.
  OSStatus open(const std::string& path);
  /// Opens a file in a folder where SQLite cannot make the files that it shares with other
  /// processes. Nothing may change the file meanwhile, so the connection is used only once.
  OSStatus openUnchanging(const std::string& path);
  /// Makes a database in memory.
  OSStatus openInMemory();

  OSStatus execute(const char* sql) noexcept;
  /// Null if SQLite refuses the text, and `status` says why.
  SQLiteStatement prepare(const std::string& sql, OSStatus& status) noexcept;
  /// The kept statement of this key, prepared from the text at its first use. Null as above.
  sqlite3_stmt* keptStatement(std::uint64_t key, FunctionView<std::string()> sql, OSStatus& status);

  /// Frees kept statements if there are too many. No statement may be in use.
  void trimStatements() noexcept;

  /// What a result of SQLite's functions on this connection means, `SQLITE_ROW` and `SQLITE_DONE`
  /// included. The last error must be that of this result.
  OSStatus statusOf(int result) noexcept;
  /// Whether the connection may be used again: not if an error was seen after which a new one is
  /// better.
  [[nodiscard]] bool isReusable() const noexcept { return isReusable_; }
  /// Whether the file is no longer at its path, so that what is read would be outdated, and what is
  /// written would be lost. Asks the system for the file at the path.
  [[nodiscard]] bool isFileGone() noexcept;
  /// Leaves the write-ahead log as it is when the connection is closed.
  void keepLogWhenClosed() noexcept;

  sqlite3* handle() const noexcept { return database_.get(); }

 private:
  /// SQLite's callback while another process holds a lock; answers whether to try again.
  static int waitForLock(void* connection, int attempts) noexcept;
  OSStatus openWithFlags(const char* path, int flags) noexcept;

  // The statements are destroyed before the connection.
  std::unique_ptr<sqlite3, SQLiteCloser> database_;
  std::unordered_map<std::uint64_t, SQLiteStatement> statements_;
  std::chrono::steady_clock::time_point lockDeadline_;
  bool isReusable_ = true;
};

/// Ends the use of a kept statement with its scope, which also ends its read transaction.
class StatementReset {
 public:
  explicit StatementReset(sqlite3_stmt* statement) noexcept : statement_(statement) {}
  StatementReset(const StatementReset&) = delete;
  StatementReset& operator=(const StatementReset&) = delete;
  ~StatementReset() { sqlite3_reset(statement_); }

 private:
  sqlite3_stmt* statement_;
};

/// A write transaction, which is rolled back unless it is committed.
class WriteTransaction {
 public:
  explicit WriteTransaction(SQLiteConnection& connection);
  WriteTransaction(const WriteTransaction&) = delete;
  WriteTransaction& operator=(const WriteTransaction&) = delete;
  ~WriteTransaction();

  /// Why the transaction could not begin.
  OSStatus status() const noexcept { return status_; }
  OSStatus commit();

 private:
  /// Runs a kept statement without parameters.
  OSStatus run(std::uint64_t key, const char* sql);

  SQLiteConnection& connection_;
  OSStatus status_;
};

}  // namespace zeb
