#include <ZEBPlatform/Linux/detail/PrivateFiles.h>
#include <ZEBPlatform/Security/KeychainDatabaseFilePrivate.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <span>

namespace zeb {

namespace {

/// The whole schema. The statements are compared with what the file says, so they must not change
/// within one version of the format. Columns without a type keep the kind of each value.
constexpr const char* schema[] = {
    "CREATE TABLE store(id INTEGER PRIMARY KEY, salt, cost, blockSize, parallelism, keyCheck)",
    "CREATE TABLE passwords(id INTEGER PRIMARY KEY, accessGroup NOT NULL, account NOT NULL, "
    "service NOT NULL, generic, label, accessible, applicationTag, applicationLabel, keyType, "
    "keyClass, keySizeInBits, creationDate, modificationDate, value, "
    "UNIQUE(service, account, accessGroup))",
    "CREATE TABLE keys(id INTEGER PRIMARY KEY, accessGroup NOT NULL, account, service, generic, "
    "label, accessible, applicationTag NOT NULL, applicationLabel, keyType NOT NULL, "
    "keyClass NOT NULL, keySizeInBits, creationDate, modificationDate, value, "
    "UNIQUE(applicationTag, keyClass, keyType, accessGroup))",
};

constexpr std::uint32_t applicationIdentifier = 0x5A45424B;
constexpr std::uint32_t formatVersion = 1;
constexpr const char* identification =
    "PRAGMA application_id = 1514488395; PRAGMA user_version = 1";
static_assert(applicationIdentifier == 1514488395);

// The header of SQLite's file format, whose numbers have their highest byte first.
constexpr std::size_t headerLength = 100;
constexpr std::string_view headerBegin("SQLite format 3", 16);
constexpr std::size_t journalVersionsPlace = 18;  // of two bytes, for writing and reading
constexpr std::byte writeAheadLog{2};
constexpr std::size_t formatVersionPlace = 60;
constexpr std::size_t applicationIdentifierPlace = 68;

std::uint32_t numberAt(std::span<const std::byte> header, std::size_t place) noexcept {
  std::uint32_t number = 0;
  for (const std::byte byte : header.subspan(place, 4)) {
    number = number << 8 | std::to_integer<std::uint32_t>(byte);
  }
  return number;
}

bool isStoreOfThisFormat(std::span<const std::byte> header) noexcept {
  return std::ranges::equal(header.first(headerBegin.size()),
                            std::as_bytes(std::span(headerBegin))) &&
         header[journalVersionsPlace] == writeAheadLog &&
         header[journalVersionsPlace + 1] == writeAheadLog &&
         numberAt(header, formatVersionPlace) == formatVersion &&
         numberAt(header, applicationIdentifierPlace) == applicationIdentifier;
}

int bindNumber(sqlite3_stmt* statement, int parameter, std::uint64_t number) noexcept {
  return sqlite3_bind_int64(statement, parameter, static_cast<std::int64_t>(number));
}
int bindBlob(sqlite3_stmt* statement, int parameter, std::span<const std::byte> bytes) noexcept {
  return sqlite3_bind_blob(statement, parameter, bytes.data(), static_cast<int>(bytes.size()),
                           SQLITE_STATIC);
}

std::vector<std::byte> blobAt(sqlite3_stmt* statement, int column) {
  const auto* const bytes = static_cast<const std::byte*>(sqlite3_column_blob(statement, column));
  return {bytes, bytes + sqlite3_column_bytes(statement, column)};
}

std::uint64_t numberAt(sqlite3_stmt* statement, int column) noexcept {
  return static_cast<std::uint64_t>(sqlite3_column_int64(statement, column));
}

OSStatus fill(SQLiteConnection& connection, const KeychainKeyFacts& facts) {
  if (const OSStatus status = connection.execute(identification)) return status;
  for (const char* const statement : schema) {
    if (const OSStatus status = connection.execute(statement)) return status;
  }
  OSStatus status;
  const SQLiteStatement insertion =
      connection.prepare("INSERT INTO store VALUES(1, ?1, ?2, ?3, ?4, ?5)", status);
  if (!insertion) return status;
  sqlite3_stmt* const row = insertion.get();
  for (const int result : {bindBlob(row, 1, facts.salt), bindNumber(row, 2, facts.cost),
                           bindNumber(row, 3, facts.blockSize),
                           bindNumber(row, 4, facts.parallelism), bindBlob(row, 5, facts.check)}) {
    if (result != SQLITE_OK) return connection.statusOf(result);
  }
  return connection.statusOf(sqlite3_step(row));
}

struct SQLiteMemoryFreer {
  void operator()(unsigned char* memory) const noexcept { sqlite3_free(memory); }
};

OSStatus checkSchema(SQLiteConnection& connection) {
  OSStatus status;
  const SQLiteStatement statement = connection.prepare(
      "SELECT sql FROM sqlite_schema WHERE sql IS NOT NULL ORDER BY rowid", status);
  if (!statement) return status;
  for (const std::string_view expected : schema) {
    const int result = sqlite3_step(statement.get());
    if (const OSStatus failure = connection.statusOf(result)) return failure;
    const unsigned char* const text =
        result == SQLITE_ROW ? sqlite3_column_text(statement.get(), 0) : nullptr;
    if (!text || expected != reinterpret_cast<const char*>(text)) return errSecInvalidKeychain;
  }
  const int result = sqlite3_step(statement.get());
  return result == SQLITE_ROW ? errSecInvalidKeychain : connection.statusOf(result);
}

}  // namespace

OSStatus writeNewDatabaseFile(const std::string& path, const KeychainKeyFacts& facts) {
  SQLiteConnection connection;
  OSStatus status = connection.openInMemory();
  if (!status) status = fill(connection, facts);
  if (status) return status;
  sqlite3_int64 size = 0;
  const std::unique_ptr<unsigned char, SQLiteMemoryFreer> image(
      sqlite3_serialize(connection.handle(), "main", &size, 0));
  if (!image) return errSecAllocate;
  const std::span<std::byte> bytes(reinterpret_cast<std::byte*>(image.get()),
                                   static_cast<std::size_t>(size));
  // Databases in memory have no write-ahead log. A file whose header says so has one from its first
  // connection on, so that no connection needs to change the mode while others are open.
  bytes[journalVersionsPlace] = bytes[journalVersionsPlace + 1] = writeAheadLog;
  return statusOfWritingError(writeNewFile(path, bytes));
}

OSStatus examineDatabaseFile(const std::string& path, DatabaseFile& found) {
  std::array<std::byte, headerLength> header;
  std::size_t count = 0;
  const int failure = readProtectedFile(path, Protection::fromChanges, header, count);
  found = failure == ENOENT ? DatabaseFile::missing : DatabaseFile::present;
  if (found == DatabaseFile::missing) return errSecSuccess;
  if (failure) return statusOfErrorNumber(failure);
  if (count != header.size() || !isStoreOfThisFormat(header)) return errSecInvalidKeychain;
  // SQLite takes what these files say for a part of the database.
  for (const char* const suffix : {"-wal", "-shm", "-journal"}) {
    const int fault = readProtectedFile(path + suffix, Protection::fromChanges, {}, count);
    if (fault && fault != ENOENT) return statusOfErrorNumber(fault);
  }
  return errSecSuccess;
}

OSStatus readKeyFacts(SQLiteConnection& connection, KeychainKeyFacts& facts) {
  if (const OSStatus status = checkSchema(connection)) return status;
  OSStatus status;
  const SQLiteStatement statement =
      connection.prepare("SELECT salt, cost, blockSize, parallelism, keyCheck FROM store", status);
  if (!statement) return status;
  const int result = sqlite3_step(statement.get());
  if (result == SQLITE_DONE) return errSecInvalidKeychain;
  if (result != SQLITE_ROW) return connection.statusOf(result);
  facts.salt = blobAt(statement.get(), 0);
  facts.cost = numberAt(statement.get(), 1);
  facts.blockSize = numberAt(statement.get(), 2);
  facts.parallelism = numberAt(statement.get(), 3);
  facts.check = blobAt(statement.get(), 4);
  return errSecSuccess;
}

OSStatus statusOfErrorNumber(int number) noexcept {
  switch (number) {
    case 0:
      return errSecSuccess;
    case EEXIST:
      return errSecDuplicateItem;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return errSecDiskFull;
    case EROFS:
      return errSecWrPerm;
    case ENOMEM:
      return errSecAllocate;
    case EIO:
      return errSecIO;
    case EINVAL:  // something that is no file
    case EISDIR:
      return errSecInvalidKeychain;
    default:  // no such folder, no permission, links, other users' files, no descriptors
      return errSecNotAvailable;
  }
}

OSStatus statusOfWritingError(int number) noexcept {
  return number == EACCES || number == EPERM ? errSecWrPerm : statusOfErrorNumber(number);
}

}  // namespace zeb
