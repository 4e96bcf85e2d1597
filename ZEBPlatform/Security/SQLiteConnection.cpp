#include <ZEBPlatform/Security/SQLiteConnectionPrivate.h>

#include <cerrno>
#include <string_view>
#include <thread>

namespace zeb {

namespace {

/// How long a call waits for other processes that hold the database's locks.
constexpr std::chrono::seconds maxLockWait{5};
/// Between two attempts. SQLite's own handler pauses for up to 100 milliseconds, in which time a
/// process that writes without a break has taken the lock again many times.
constexpr std::chrono::microseconds lockPause{500};

/// More than the shapes of queries that a program uses.
constexpr std::size_t maxKeptStatements = 64;

/// Full synchronisation makes each commit wait for the disk. The checks of cells find damaged pages
/// before they are used, and a schema that was changed outside must not run functions.
constexpr const char* settings =
    "PRAGMA trusted_schema = OFF;"
    "PRAGMA cell_size_check = ON;"
    "PRAGMA synchronous = FULL;"
    "PRAGMA secure_delete = ON;"
    "PRAGMA temp_store = MEMORY;"
    "PRAGMA journal_size_limit = 4194304;";

// The highest byte of a statement's key is free for statements without parameters.
constexpr std::uint64_t beginKey = std::uint64_t{0xF0} << 56;
constexpr std::uint64_t commitKey = std::uint64_t{0xF1} << 56;

bool isDiskFull(int errorNumber) noexcept {
  return errorNumber == ENOSPC || errorNumber == EDQUOT || errorNumber == EFBIG;
}

OSStatus statusOfCannotOpen(int errorNumber) noexcept {
  return isDiskFull(errorNumber) ? errSecDiskFull : errSecNotAvailable;
}

}  // namespace

int SQLiteConnection::waitForLock(void* connection, int attempts) noexcept {
  auto& lockDeadline = static_cast<SQLiteConnection*>(connection)->lockDeadline_;
  const auto now = std::chrono::steady_clock::now();
  if (attempts == 0) lockDeadline = now + maxLockWait;
  if (now >= lockDeadline) return 0;
  std::this_thread::sleep_for(lockPause);
  return 1;
}

OSStatus SQLiteConnection::openWithFlags(const char* path, int flags) noexcept {
  sqlite3* database = nullptr;
  const int result = sqlite3_open_v2(path, &database,
                                     flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
  database_.reset(database);
  if (!database) return errSecAllocate;
  if (result != SQLITE_OK) return statusOf(result);
  sqlite3_busy_handler(database, &waitForLock, this);
  sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  return execute(settings);
}

OSStatus SQLiteConnection::open(const std::string& path) {
  return openWithFlags(path.c_str(),
                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_PRIVATECACHE);
}

OSStatus SQLiteConnection::openUnchanging(const std::string& path) {
  isReusable_ = false;
  std::string address = "file:";
  for (const char character : path) {
    constexpr std::string_view meaningful = "%?#";
    constexpr std::string_view escaped[] = {"%25", "%3f", "%23"};
    const std::size_t place = meaningful.find(character);
    if (place == std::string_view::npos) {
      address += character;
    } else {
      address += escaped[place];
    }
  }
  address += "?immutable=1";
  return openWithFlags(address.c_str(), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI |
                                            SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_PRIVATECACHE);
}

OSStatus SQLiteConnection::openInMemory() {
  return openWithFlags(":memory:", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_MEMORY |
                                       SQLITE_OPEN_PRIVATECACHE);
}

OSStatus SQLiteConnection::execute(const char* sql) noexcept {
  return statusOf(sqlite3_exec(handle(), sql, nullptr, nullptr, nullptr));
}

SQLiteStatement SQLiteConnection::prepare(const std::string& sql, OSStatus& status) noexcept {
  sqlite3_stmt* statement = nullptr;
  status = statusOf(sqlite3_prepare_v3(handle(), sql.c_str(), static_cast<int>(sql.size() + 1),
                                       SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
  return SQLiteStatement(statement);
}

sqlite3_stmt* SQLiteConnection::keptStatement(std::uint64_t key, FunctionView<std::string()> sql,
                                              OSStatus& status) {
  status = errSecSuccess;
  const auto found = statements_.find(key);
  if (found != statements_.end()) return found->second.get();
  SQLiteStatement statement = prepare(sql(), status);
  if (!statement) return nullptr;
  return statements_.emplace(key, std::move(statement)).first->second.get();
}

void SQLiteConnection::trimStatements() noexcept {
  if (statements_.size() > maxKeptStatements) statements_.clear();
}

OSStatus SQLiteConnection::statusOf(int result) noexcept {
  switch (result & 0xFF) {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
      return errSecSuccess;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
      return errSecNotAvailable;
    case SQLITE_TOOBIG:
      return errSecParam;
    case SQLITE_FULL:
      return errSecDiskFull;
    case SQLITE_CONSTRAINT:
      return result == SQLITE_CONSTRAINT_UNIQUE ? errSecDuplicateItem : errSecInvalidKeychain;
    case SQLITE_NOMEM:
      return errSecAllocate;
    default:
      break;
  }
  isReusable_ = false;
  const int errorNumber = sqlite3_system_errno(handle());
  switch (result & 0xFF) {
    case SQLITE_READONLY:
      return errSecWrPerm;
    case SQLITE_CANTOPEN:
      return statusOfCannotOpen(errorNumber);
    case SQLITE_PERM:
    case SQLITE_AUTH:
      return errSecNotAvailable;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_ERROR:  // the schema is not the one that the statements were written for
    case SQLITE_SCHEMA:
    case SQLITE_MISMATCH:
      return errSecInvalidKeychain;
    default:
      return isDiskFull(errorNumber) ? errSecDiskFull : errSecIO;
  }
}

bool SQLiteConnection::isFileGone() noexcept {
  int isGone = 0;
  sqlite3_file_control(handle(), "main", SQLITE_FCNTL_HAS_MOVED, &isGone);
  return isGone;
}

void SQLiteConnection::keepLogWhenClosed() noexcept {
  sqlite3_db_config(handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

WriteTransaction::WriteTransaction(SQLiteConnection& connection)
    : connection_(connection), status_(run(beginKey, "BEGIN IMMEDIATE")) {}

WriteTransaction::~WriteTransaction() {
  // SQLite has ended the transaction itself after some errors.
  if (!sqlite3_get_autocommit(connection_.handle())) connection_.execute("ROLLBACK");
}

OSStatus WriteTransaction::commit() { return run(commitKey, "COMMIT"); }

OSStatus WriteTransaction::run(std::uint64_t key, const char* sql) {
  OSStatus status;
  sqlite3_stmt* const statement =
      connection_.keptStatement(key, [sql] { return std::string(sql); }, status);
  if (!statement) return status;
  const StatementReset reset(statement);
  return connection_.statusOf(sqlite3_step(statement));
}

}  // namespace zeb
