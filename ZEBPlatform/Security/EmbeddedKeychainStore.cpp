#include <ZEBPlatform/Linux/detail/PrivateFiles.h>
#include <ZEBPlatform/Security/EmbeddedKeychainStore.h>
#include <ZEBPlatform/Security/KeychainCipherPrivate.h>
#include <ZEBPlatform/Security/KeychainColumnsPrivate.h>
#include <ZEBPlatform/Security/KeychainDatabasePrivate.h>
#include <ZEBPlatform/Security/KeychainKeyPrivate.h>

#include <algorithm>
#include <array>
#include <new>
#include <optional>
#include <utility>

namespace zeb {

namespace {

using Lease = KeychainDatabase::Lease;
using Access = KeychainDatabase::Access;
using Sealed = std::optional<std::vector<std::byte>>;

constexpr KeychainAttributeMask allAttributes =
    (KeychainAttributeMask{1} << keychainAttributeCount) - 1;

constexpr const char* keyFileName = "/keychain.key";
constexpr const char* folderInUserData = "/zebutilities/keychain";

// Parts of the keys of kept statements, beside the attributes of the condition and of the change.
enum class Action : std::uint64_t {
  insert,
  select,
  selectWithValue,
  selectValue,
  update,
  updateWithValue,
  remove
};

std::uint64_t statementKey(Action action, KeychainItemClass itemClass,
                           KeychainAttributeMask condition,
                           KeychainAttributeMask change = 0) noexcept {
  return static_cast<std::uint64_t>(action) << 40 | static_cast<std::uint64_t>(itemClass) << 32 |
         std::uint64_t{change} << 16 | condition;
}
static_assert(keychainAttributeCount <= 16);

/// Appends "name", or "name = ?", for each attribute of the mask.
void appendColumns(std::string& sql, KeychainAttributeMask mask, const char* separator,
                   const char* suffix) {
  const char* before = "";
  for (std::size_t i = 0; i < keychainAttributeCount; ++i) {
    const auto attribute = static_cast<KeychainAttribute>(i);
    if (!(mask & maskOf(attribute))) continue;
    sql.append(before).append(columnName(attribute)).append(suffix);
    before = separator;
  }
}

void appendCondition(std::string& sql, KeychainAttributeMask mask) {
  if (!mask) return;
  sql += " WHERE ";
  appendColumns(sql, mask, " AND ", " = ?");
}

std::string insertion(KeychainItemClass itemClass) {
  std::string sql = std::string("INSERT INTO ") + tableName(itemClass) + "(";
  appendColumns(sql, allAttributes, ", ", "");
  sql += ", value) VALUES(?";
  for (std::size_t i = 0; i < keychainAttributeCount; ++i) sql += ", ?";
  return sql + ")";
}

using Values = KeychainStore::Values;

constexpr Action selectionAction(Values values) noexcept {
  if (values == Values::leaveOut) return Action::select;
  return values == Values::include ? Action::selectWithValue : Action::selectValue;
}

/// The attributes that a search with this condition takes from the rows. Values can be opened only
/// together with the identity.
KeychainAttributeMask selectedAttributes(KeychainItemClass itemClass,
                                         KeychainAttributeMask condition, Values values) noexcept {
  const KeychainAttributeMask needed =
      values == Values::only ? identityMask(itemClass) : allAttributes;
  return needed & ~exactAttributes(condition);
}

/// The columns are the identifier, the value or NULL, and the selected attributes.
std::string selection(KeychainItemClass itemClass, KeychainAttributeMask condition, Values values) {
  std::string sql = values == Values::leaveOut ? "SELECT id, NULL" : "SELECT id, value";
  if (const auto selected = selectedAttributes(itemClass, condition, values)) {
    sql += ", ";
    appendColumns(sql, selected, ", ", "");
  }
  sql.append(" FROM ").append(tableName(itemClass));
  appendCondition(sql, condition);
  return sql + " ORDER BY id LIMIT ?";
}
constexpr int identifierColumn = 0;
constexpr int valueColumn = 1;
constexpr int firstAttributeColumn = 2;

enum class ValueChange : std::uint8_t { keep, replace };

std::string change(KeychainItemClass itemClass, KeychainAttributeMask changed, ValueChange value) {
  std::string sql = std::string("UPDATE ") + tableName(itemClass) + " SET ";
  appendColumns(sql, changed, ", ", " = ?");
  if (value == ValueChange::replace) sql += changed ? ", value = ?" : "value = ?";
  return sql + " WHERE id = ?";
}

std::string removal(KeychainItemClass itemClass, KeychainAttributeMask condition) {
  std::string sql = std::string("DELETE FROM ") + tableName(itemClass);
  appendCondition(sql, condition);
  return sql;
}

int bindSealed(sqlite3_stmt* statement, int parameter, const Sealed& sealed) noexcept {
  if (!sealed) return sqlite3_bind_null(statement, parameter);
  return sqlite3_bind_blob64(statement, parameter, sealed->data(), sealed->size(), SQLITE_STATIC);
}

std::span<const std::byte> blobAt(sqlite3_stmt* statement, int column) noexcept {
  const auto* const bytes = static_cast<const std::byte*>(sqlite3_column_blob(statement, column));
  return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
}

OSStatus sealValue(KeychainCipher& cipher, const KeychainItem& item, const std::string& identity,
                   Sealed& sealed) {
  if (!item.value) return errSecSuccess;
  if (item.value->size() > KeychainStore::maxValueLength) return errSecParam;
  return cipher.seal(identity, item.value->bytes(), sealed.emplace());
}

/// The value of the current row, whose columns are given.
OSStatus openValue(KeychainCipher& cipher, sqlite3_stmt* row, KeychainItemClass itemClass,
                   const KeychainColumns& columns, std::optional<SecretBytes>& value) {
  switch (sqlite3_column_type(row, valueColumn)) {
    case SQLITE_NULL:
      return errSecSuccess;
    case SQLITE_BLOB: {
      const std::span<const std::byte> sealed = blobAt(row, valueColumn);
      if (sealed.size() > KeychainStore::maxValueLength + KeychainCipher::overhead)
        return errSecDecode;
      return cipher.open(columns.identity(itemClass), sealed, value.emplace());
    }
    default:
      return errSecDecode;
  }
}

/// Copies the attributes of the mask. Mutable values become immutable.
void copyAttributes(const KeychainAttributes& from, KeychainAttributeMask mask,
                    KeychainAttributes& to) {
  for (std::size_t i = 0; i < keychainAttributeCount; ++i) {
    const auto attribute = static_cast<KeychainAttribute>(i);
    if (mask & maskOf(attribute)) to[attribute] = from[attribute].copy();
  }
}

/// Removes what was appended to the items unless it is kept.
class AppendedItems {
 public:
  explicit AppendedItems(std::vector<KeychainItem>& items) noexcept
      : items_(items), begin_(items.size()) {}
  AppendedItems(const AppendedItems&) = delete;
  AppendedItems& operator=(const AppendedItems&) = delete;
  ~AppendedItems() {
    if (!isKept_) items_.resize(begin_);
  }

  bool isEmpty() const noexcept { return items_.size() == begin_; }
  void keep() noexcept { isKept_ = true; }

 private:
  std::vector<KeychainItem>& items_;
  const std::size_t begin_;
  bool isKept_ = false;
};

/// Memory that is missing is a status like others. Other exceptions are those of the host's code.
template <class Work>
OSStatus statusOfWork(const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return errSecAllocate;
  }
}

/// For writes that need no preparation.
OSStatus nothing(const Lease&) noexcept { return errSecSuccess; }

class SQLiteKeychainStore : public EmbeddedKeychainStore {
 public:
  SQLiteKeychainStore(std::shared_ptr<KeychainDatabase> database, SecretBytes key)
      : database_(std::move(database)), key_(std::move(key)) {}

  OSStatus add(std::span<const KeychainItem> items) override {
    return statusOfWork([&] { return addAll(items); });
  }
  OSStatus find(const KeychainQuery& query, Values values, std::size_t maxCount,
                std::vector<KeychainItem>& found) override {
    return statusOfWork([&] { return findAll(query, values, maxCount, found); });
  }
  OSStatus update(const KeychainQuery& query, const KeychainItem& changes) override {
    return statusOfWork([&] { return updateAll(query, changes); });
  }
  OSStatus remove(const KeychainQuery& query) override {
    return statusOfWork([&] { return removeAll(query); });
  }

  std::string className() const override { return "EmbeddedKeychainStore"; }

 private:
  /// A row that an update changes.
  struct Match;

  OSStatus addAll(std::span<const KeychainItem> items);
  OSStatus addOne(SQLiteConnection& connection, const KeychainItem& item,
                  const KeychainColumns& columns, const Sealed& sealed);
  OSStatus findAll(const KeychainQuery& query, Values values, std::size_t maxCount,
                   std::vector<KeychainItem>& found);
  OSStatus updateAll(const KeychainQuery& query, const KeychainItem& changes);
  OSStatus updateMatches(Lease& lease, KeychainItemClass itemClass,
                         const KeychainColumns& condition, const KeychainItem& changes,
                         const KeychainColumns& changed);
  OSStatus updateOne(SQLiteConnection& connection, const KeychainItem& changes,
                     const KeychainColumns& changed, const Match& match);
  OSStatus removeAll(const KeychainQuery& query);

  KeychainCipher& cipherOf(const Lease& lease) noexcept {
    std::optional<KeychainCipher>& cipher = ciphers_[lease.place()];
    if (!cipher || !*cipher) cipher.emplace(key_);
    return *cipher;
  }
  /// Leases the connection that writes, calls `prepare` with the lease, begins a transaction, which
  /// keeps other processes waiting, and calls `work`. Commits if all of them succeed.
  template <class Prepare, class Work>
  OSStatus write(const Prepare& prepare, const Work& work);
  /// Calls `visit` with each row that matches.
  template <class Visit>
  OSStatus select(SQLiteConnection& connection, KeychainItemClass itemClass,
                  const KeychainColumns& condition, Values values, std::size_t maxCount,
                  const Visit& visit);

  const std::shared_ptr<KeychainDatabase> database_;
  const SecretBytes key_;
  /// One for each of the database's connections, used by the lease of the connection.
  std::array<std::optional<KeychainCipher>, KeychainDatabase::maxConnections> ciphers_;
};

struct SQLiteKeychainStore::Match {
  sqlite3_int64 identifier;
  Sealed sealed;  ///< the new value, if it changes
};

template <class Prepare, class Work>
OSStatus SQLiteKeychainStore::write(const Prepare& prepare, const Work& work) {
  Lease lease(*database_, Access::writes);
  OSStatus status = lease.prepare();
  if (!status) status = prepare(lease);
  if (status) return status;
  WriteTransaction transaction(lease.connection());
  status = transaction.status();
  if (!status) status = work(lease);
  return status ? status : transaction.commit();
}

template <class Visit>
OSStatus SQLiteKeychainStore::select(SQLiteConnection& connection, KeychainItemClass itemClass,
                                     const KeychainColumns& condition, Values values,
                                     std::size_t maxCount, const Visit& visit) {
  OSStatus status;
  sqlite3_stmt* const statement = connection.keptStatement(
      statementKey(selectionAction(values), itemClass, condition.present()),
      [&] { return selection(itemClass, condition.present(), values); }, status);
  if (!statement) return status;
  const StatementReset reset(statement);
  int parameter = 1;
  int bound = condition.bind(statement, parameter, condition.present(), itemClass);
  const auto maxRows = static_cast<std::uint64_t>(INT64_MAX);
  if (bound == SQLITE_OK) {
    bound =
        sqlite3_bind_int64(statement, parameter,
                           static_cast<sqlite3_int64>(std::min<std::uint64_t>(maxCount, maxRows)));
  }
  if (bound != SQLITE_OK) return connection.statusOf(bound);
  const KeychainAttributeMask selected = selectedAttributes(itemClass, condition.present(), values);
  KeychainColumns row;
  for (;;) {
    const int result = sqlite3_step(statement);
    if (result != SQLITE_ROW) return connection.statusOf(result);
    status = row.takeRow(statement, firstAttributeColumn, selected, condition);
    if (!status) status = visit(statement, row);
    if (status) return status;
  }
}

OSStatus SQLiteKeychainStore::addAll(std::span<const KeychainItem> items) {
  struct Row {
    KeychainColumns columns;
    Sealed sealed;
  };
  std::vector<std::unique_ptr<Row>> rows;
  for (const KeychainItem& item : items) {
    Row& row = *rows.emplace_back(std::make_unique<Row>());
    if (item.attributes[KeychainAttribute::accessGroup].isNil()) return errSecParam;
    if (const OSStatus status = row.columns.take(item.attributes)) return status;
  }
  const auto seal = [&](const Lease& lease) {
    OSStatus status = errSecSuccess;
    for (std::size_t i = 0; !status && i < items.size(); ++i) {
      const std::string identity = rows[i]->columns.identity(items[i].itemClass);
      status = sealValue(cipherOf(lease), items[i], identity, rows[i]->sealed);
    }
    return status;
  };
  return write(seal, [&](Lease& lease) {
    OSStatus status = errSecSuccess;
    for (std::size_t i = 0; !status && i < items.size(); ++i) {
      status = addOne(lease.connection(), items[i], rows[i]->columns, rows[i]->sealed);
    }
    return status;
  });
}

OSStatus SQLiteKeychainStore::addOne(SQLiteConnection& connection, const KeychainItem& item,
                                     const KeychainColumns& columns, const Sealed& sealed) {
  OSStatus status;
  sqlite3_stmt* const statement = connection.keptStatement(
      statementKey(Action::insert, item.itemClass, 0), [&] { return insertion(item.itemClass); },
      status);
  if (!statement) return status;
  const StatementReset reset(statement);
  int parameter = 1;
  int result = columns.bind(statement, parameter, allAttributes, item.itemClass);
  if (result == SQLITE_OK) result = bindSealed(statement, parameter, sealed);
  if (result == SQLITE_OK) result = sqlite3_step(statement);
  return connection.statusOf(result);
}

OSStatus SQLiteKeychainStore::findAll(const KeychainQuery& query, Values values,
                                      std::size_t maxCount, std::vector<KeychainItem>& found) {
  KeychainColumns condition;
  if (const OSStatus status = condition.take(query.attributes)) return status;
  const KeychainAttributeMask known = exactAttributes(condition.present());
  AppendedItems appended(found);
  Lease lease(*database_, Access::reads);
  OSStatus status = lease.prepare();
  if (status) return status;
  KeychainCipher& cipher = cipherOf(lease);
  status = select(lease.connection(), query.itemClass, condition, values, maxCount,
                  [&](sqlite3_stmt* statement, const KeychainColumns& row) {
                    KeychainItem& item = found.emplace_back();
                    item.itemClass = query.itemClass;
                    if (values != Values::only) {
                      copyAttributes(query.attributes, known, item.attributes);
                      row.copyTo(item.attributes, known);
                    }
                    return openValue(cipher, statement, query.itemClass, row, item.value);
                  });
  if (status) return status;
  if (appended.isEmpty()) return errSecItemNotFound;
  appended.keep();
  return errSecSuccess;
}

OSStatus SQLiteKeychainStore::updateAll(const KeychainQuery& query, const KeychainItem& changes) {
  KeychainColumns condition;
  KeychainColumns changed;
  OSStatus status = condition.take(query.attributes);
  if (!status) status = changed.take(changes.attributes);
  if (!status && changes.itemClass != query.itemClass) status = errSecParam;
  if (!status && changes.value && changes.value->size() > maxValueLength) status = errSecParam;
  if (status) return status;
  return write(nothing, [&](Lease& lease) {
    return updateMatches(lease, query.itemClass, condition, changes, changed);
  });
}

OSStatus SQLiteKeychainStore::updateMatches(Lease& lease, KeychainItemClass itemClass,
                                            const KeychainColumns& condition,
                                            const KeychainItem& changes,
                                            const KeychainColumns& changed) {
  SQLiteConnection& connection = lease.connection();
  KeychainCipher& cipher = cipherOf(lease);
  // The rows are collected first, because changing them could make the search meet them again. A
  // value is bound to its item's identity and must be sealed again if that changes.
  const bool movesValues = (changed.present() & identityMask(itemClass)) && !changes.value;
  std::vector<Match> matches;
  OSStatus status =
      select(connection, itemClass, condition, movesValues ? Values::include : Values::leaveOut,
             SIZE_MAX, [&](sqlite3_stmt* statement, KeychainColumns& row) {
               Match& match = matches.emplace_back();
               match.identifier = sqlite3_column_int64(statement, identifierColumn);
               KeychainItem item;
               const OSStatus failure = openValue(cipher, statement, itemClass, row, item.value);
               if (failure) return failure;
               row.overlay(changed);
               const KeychainItem& source = movesValues ? item : changes;
               return sealValue(cipher, source, row.identity(itemClass), match.sealed);
             });
  if (!status && matches.empty()) status = errSecItemNotFound;
  if (!changed.present() && !changes.value) return status;
  for (std::size_t i = 0; !status && i < matches.size(); ++i) {
    status = updateOne(connection, changes, changed, matches[i]);
  }
  return status;
}

OSStatus SQLiteKeychainStore::updateOne(SQLiteConnection& connection, const KeychainItem& changes,
                                        const KeychainColumns& changed, const Match& match) {
  const ValueChange value = match.sealed ? ValueChange::replace : ValueChange::keep;
  const Action action = match.sealed ? Action::updateWithValue : Action::update;
  OSStatus status;
  sqlite3_stmt* const statement = connection.keptStatement(
      statementKey(action, changes.itemClass, 0, changed.present()),
      [&] { return change(changes.itemClass, changed.present(), value); }, status);
  if (!statement) return status;
  const StatementReset reset(statement);
  int parameter = 1;
  int result = changed.bind(statement, parameter, changed.present(), changes.itemClass);
  if (result == SQLITE_OK && match.sealed) {
    result = bindSealed(statement, parameter++, match.sealed);
  }
  if (result == SQLITE_OK) result = sqlite3_bind_int64(statement, parameter, match.identifier);
  if (result == SQLITE_OK) result = sqlite3_step(statement);
  return connection.statusOf(result);
}

OSStatus SQLiteKeychainStore::removeAll(const KeychainQuery& query) {
  KeychainColumns condition;
  if (const OSStatus status = condition.take(query.attributes)) return status;
  return write(nothing, [&](Lease& lease) -> OSStatus {
    SQLiteConnection& connection = lease.connection();
    OSStatus status;
    sqlite3_stmt* const statement = connection.keptStatement(
        statementKey(Action::remove, query.itemClass, condition.present()),
        [&] { return removal(query.itemClass, condition.present()); }, status);
    if (!statement) return status;
    const StatementReset reset(statement);
    int parameter = 1;
    int result = condition.bind(statement, parameter, condition.present(), query.itemClass);
    if (result == SQLITE_OK) result = sqlite3_step(statement);
    status = connection.statusOf(result);
    if (status) return status;
    return sqlite3_changes(connection.handle()) == 0 ? errSecItemNotFound : errSecSuccess;
  });
}

OSStatus openStore(const NSString& folder, KeychainMasterKey masterKey,
                   Ref<EmbeddedKeychainStore>& store) {
  std::string path = folder.utf8();
  if (folder.isNil()) {
    path = userDataFolder();
    if (path.empty()) return errSecNotAvailable;
    path += folderInUserData;
  }
  if (path.empty() || path.find('\0') != std::string::npos) return errSecParam;
  std::string canonicalPath;
  if (const int failure = makePrivateFolder(path, canonicalPath)) {
    return statusOfErrorNumber(failure);
  }
  KeychainKeyFinder finder(std::move(masterKey), canonicalPath + keyFileName);
  OSStatus status = finder.askSource();
  SecretBytes key;
  std::shared_ptr<KeychainDatabase> database;
  if (!status) status = KeychainDatabase::open(canonicalPath, finder, key, database);
  if (!status) store = makeRef<SQLiteKeychainStore>(std::move(database), std::move(key));
  return status;
}

}  // namespace

Ref<EmbeddedKeychainStore> EmbeddedKeychainStore::open(const NSString& folder,
                                                       KeychainMasterKey masterKey,
                                                       OSStatus* status) {
  Ref<EmbeddedKeychainStore> store;
  const OSStatus result =
      statusOfWork([&] { return openStore(folder, std::move(masterKey), store); });
  if (status) *status = result;
  return store;
}

}  // namespace zeb
