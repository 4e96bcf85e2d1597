#include <ZEBPlatform/Security.h>
#include <ZEBUtilities/Keychain.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <vector>

#include "Bench.h"
#include "SecretServicePeer.h"

namespace zeb::bench {

namespace {

constexpr std::size_t itemCount = 500;
constexpr const char* service = "org.example.mail";
constexpr const char* group = "TEAM.org.example";

std::string usernameAt(std::size_t index) {
  return "user" + std::to_string(index % itemCount) + "@example.org";
}
std::string passwordAt(std::size_t index) { return "correct horse " + std::to_string(index); }

/// A new folder below the temporary one, which is removed with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder() : path_(std::filesystem::temp_directory_path() / "zeb-bench-XXXXXX") {
    require(::mkdtemp(path_.data()) != nullptr, "no temporary folder can be made");
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;  // files that stay in the temporary folder do no harm
    std::filesystem::remove_all(path_, ignored);
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// This library

/// Makes an embedded store with the items the place of the keychain.
class OurStore {
 public:
  OurStore() {
    OSStatus status = errSecSuccess;
    const auto store =
        EmbeddedKeychainStore::open(NSString(folder_.path()), KeychainKeyInFile{}, &status);
    require(static_cast<bool>(store),
            "the embedded store cannot be opened: " + std::to_string(status));
    SecKeychainSetStore(store);
    SecKeychainSetDefaultAccessGroup(group);
    for (std::size_t index = 0; index < itemCount; ++index) {
      require(KeychainItemUtils::storeUsername(usernameAt(index), passwordAt(index), service,
                                               nullptr, true),
              "a password cannot be stored");
    }
  }
  OurStore(const OurStore&) = delete;
  OurStore& operator=(const OurStore&) = delete;
  ~OurStore() {
    SecKeychainSetStore(nullptr);
    SecKeychainSetDefaultAccessGroup(nullptr);
  }

 private:
  TemporaryFolder folder_;
};

NSMutableDictionary itemAt(std::size_t index) {
  return {{kSecClass, kSecClassGenericPassword},
          {kSecAttrService, service},
          {kSecAttrAccount, usernameAt(index)}};
}

NSData fetchedValue(std::size_t index) {
  NSMutableDictionary query = itemAt(index);
  query.setObject(true, kSecReturnData);
  Value value;
  require(SecItemCopyMatching(query, &value) == errSecSuccess, "an item is missing");
  return NSData(value);
}

NSString fetchedPassword(std::size_t index) {
  return KeychainItemUtils::getPasswordForUsername(usernameAt(index), service, nullptr);
}

// SQLite, called directly: the table, the index and the durability of the embedded store, with
// statements that are prepared once, and values that are not sealed.

class Statement {
 public:
  Statement(sqlite3* database, const char* sql) {
    require(sqlite3_prepare_v2(database, sql, -1, &statement_, nullptr) == SQLITE_OK,
            sqlite3_errmsg(database));
  }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement() { sqlite3_finalize(statement_); }

  void bind(int parameter, std::string_view text) {
    sqlite3_bind_text(statement_, parameter, text.data(), static_cast<int>(text.size()),
                      SQLITE_TRANSIENT);
  }
  void bind(int parameter, double number) { sqlite3_bind_double(statement_, parameter, number); }
  /// Runs the statement and returns the columns of its row one after the other.
  std::string run() {
    std::string row;
    if (sqlite3_step(statement_) == SQLITE_ROW) {
      for (int column = 0; column < sqlite3_column_count(statement_); ++column) {
        const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
        row.append(bytes ? bytes : "",
                   static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
      }
    }
    require(sqlite3_reset(statement_) == SQLITE_OK, "a statement of SQLite failed");
    return row;
  }

 private:
  sqlite3_stmt* statement_ = nullptr;
};

class SQLitePeer {
 public:
  SQLitePeer() {
    for (std::size_t index = 0; index < itemCount; ++index) add(index);
  }

  std::string attributesAt(std::size_t index) {
    bindIdentity(attributes_, 1, index);
    return attributes_.run();
  }
  std::string valueAt(std::size_t index) {
    bindIdentity(value_, 1, index);
    return value_.run();
  }
  void add(std::size_t index, std::string_view username = {}) {
    const std::string known = usernameAt(index);
    insertion_.bind(1, group);
    insertion_.bind(2, username.empty() ? known : username);
    insertion_.bind(3, service);
    insertion_.bind(4, kSecAttrAccessibleAfterFirstUnlock);
    insertion_.bind(5, 700'000'000.25);
    insertion_.bind(6, passwordAt(index));
    insertion_.run();
  }
  void update(std::size_t index, std::string_view password) {
    update_.bind(1, password);
    update_.bind(2, 700'000'001.25);
    bindIdentity(update_, 3, index);
    update_.run();
  }
  void remove(std::string_view username) {
    removal_.bind(1, service);
    removal_.bind(2, username);
    removal_.bind(3, group);
    removal_.run();
  }

 private:
  struct Closer {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
  };

  static void bindIdentity(Statement& statement, int first, std::size_t index) {
    statement.bind(first, service);
    statement.bind(first + 1, usernameAt(index));
    statement.bind(first + 2, group);
  }
  std::unique_ptr<sqlite3, Closer> open() const {
    sqlite3* database = nullptr;
    const int result = sqlite3_open((folder_.path() + "/peer.sqlite").c_str(), &database);
    std::unique_ptr<sqlite3, Closer> opened(database);
    require(result == SQLITE_OK, "SQLite cannot open a file");
    const char* const setUp =
        "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;"
        "CREATE TABLE passwords(id INTEGER PRIMARY KEY, accessGroup NOT NULL, account NOT NULL,"
        " service NOT NULL, generic, label, accessible, applicationTag, applicationLabel, keyType,"
        " keyClass, keySizeInBits, creationDate, modificationDate, value,"
        " UNIQUE(service, account, accessGroup))";
    require(sqlite3_exec(database, setUp, nullptr, nullptr, nullptr) == SQLITE_OK,
            sqlite3_errmsg(database));
    return opened;
  }

  TemporaryFolder folder_;
  const std::unique_ptr<sqlite3, Closer> database_ = open();
  Statement attributes_{
      database_.get(),
      "SELECT accessGroup, account, service, generic, label, accessible, applicationTag,"
      " applicationLabel, keyType, keyClass, keySizeInBits, creationDate, modificationDate"
      " FROM passwords WHERE service = ? AND account = ? AND accessGroup = ?"};
  Statement value_{
      database_.get(),
      "SELECT value FROM passwords WHERE service = ? AND account = ? AND accessGroup = ?"};
  Statement insertion_{
      database_.get(),
      "INSERT INTO passwords(accessGroup, account, service, label, accessible, creationDate,"
      " modificationDate, value) VALUES(?1, ?2, ?3, ?3, ?4, ?5, ?5, ?6)"};
  Statement update_{database_.get(),
                    "UPDATE passwords SET value = ?, modificationDate = ?"
                    " WHERE service = ? AND account = ? AND accessGroup = ?"};
  Statement removal_{database_.get(),
                     "DELETE FROM passwords WHERE service = ? AND account = ? AND accessGroup = ?"};
};

// The cases

const Case fetch("keychain.fetch", [](Report& report) {
  const OurStore store;
  SQLitePeer peer;
  require(fetchedPassword(7) == NSString(peer.valueAt(7)), "different passwords");
  std::size_t next = 0, theirNext = 0;
  report.add(nanosecondsEach("SecItemCopyMatching for the value", "SQLite, 1 SELECT",
                             measureInTurns([&] { consume(fetchedValue(next++)); },
                                            [&] { consume(peer.valueAt(theirNext++)); }),
                             1));
  report.add(nanosecondsEach("KeychainItemUtils, 2 queries", "SQLite, 2 SELECTs",
                             measureInTurns([&] { consume(fetchedPassword(next++)); },
                                            [&] {
                                              consume(peer.attributesAt(theirNext));
                                              consume(peer.valueAt(theirNext++));
                                            }),
                             1));
  if (!startSecretService()) return report.skip("libsecret with gnome-keyring");
  // One item, because the keyring becomes slower with each further one.
  storeWithLibsecret(usernameAt(7), passwordAt(7));
  require(passwordFromLibsecret(usernameAt(7)) == passwordAt(7), "libsecret lost a password");
  report.add(nanosecondsEach("KeychainItemUtils, 2 queries", "libsecret, 1 item",
                             measureInTurns([&] { consume(fetchedPassword(next++)); },
                                            [] { consume(passwordFromLibsecret(usernameAt(7))); }),
                             1));
});

const Case store("keychain.store", [](Report& report) {
  const OurStore store;
  SQLitePeer peer;
  std::size_t next = 0, theirNext = 0;
  report.add(nanosecondsEach(
      "SecItemUpdate of the value", "SQLite, UPDATE",
      measureInTurns(
          [&] {
            const NSData password = SecretBytes::dataByAdopting(SecretBytes(passwordAt(++next)));
            require(SecItemUpdate(itemAt(next), {{kSecValueData, password}}) == errSecSuccess,
                    "an update failed");
          },
          [&] {
            ++theirNext;
            peer.update(theirNext, passwordAt(theirNext));
          }),
      1));
  report.add(
      nanosecondsEach("KeychainItemUtils, 2 queries and an update", "SQLite, 2 SELECTs and UPDATE",
                      measureInTurns(
                          [&] {
                            ++next;  // every password is a new one, so that none is left as it is
                            require(KeychainItemUtils::storeUsername(
                                        usernameAt(next), passwordAt(next), service, nullptr, true),
                                    "a store failed");
                          },
                          [&] {
                            ++theirNext;
                            consume(peer.attributesAt(theirNext));
                            consume(peer.valueAt(theirNext));
                            peer.update(theirNext, passwordAt(theirNext));
                          }),
                      1));
  report.add(nanosecondsEach(
      "SecItemAdd and SecItemDelete", "SQLite, INSERT and DELETE",
      measureInTurns(
          [&] {
            NSMutableDictionary item = itemAt(0);
            item.setObject("new", kSecAttrAccount);
            NSMutableDictionary added = item.mutableCopy();
            added.setObject(service, kSecAttrLabel);
            added.setObject(kSecAttrAccessibleAfterFirstUnlock, kSecAttrAccessible);
            added.setObject(SecretBytes::dataByAdopting(SecretBytes(passwordAt(0))), kSecValueData);
            require(SecItemAdd(added) == errSecSuccess && SecItemDelete(item) == errSecSuccess,
                    "an item was not added and deleted");
          },
          [&] {
            peer.add(0, "new");
            peer.remove("new");
          }),
      2));
  if (!startSecretService()) return report.skip("libsecret with gnome-keyring");
  report.add(
      nanosecondsEach("KeychainItemUtils, 2 queries and an update", "libsecret, 1 item",
                      measureInTurns(
                          [&] {
                            ++next;
                            require(KeychainItemUtils::storeUsername(
                                        usernameAt(next), passwordAt(next), service, nullptr, true),
                                    "a store failed");
                          },
                          [&] { storeWithLibsecret(usernameAt(7), passwordAt(++theirNext)); }),
                      1));
});

constexpr std::size_t parallelFetches = 4000;

/// All fetches, shared out among the threads.
void fetchOn(std::size_t threadCount, const std::function<void(std::size_t)>& fetchAt) {
  std::vector<std::jthread> threads;
  for (std::size_t thread = 0; thread < threadCount; ++thread) {
    threads.emplace_back([&, thread] {
      for (std::size_t index = thread; index < parallelFetches; index += threadCount) {
        fetchAt(index);
      }
    });
  }
}

const Case parallelFetch("keychain.fetch.parallel", [](Report& report) {
  const OurStore store;
  const auto keychain = makeRef<ZEBKeychain>(nullptr);
  const auto add = [&](const std::string& name, const std::function<void(std::size_t)>& fetchAt) {
    report.add(
        nanosecondsEach(name + ", 4 threads", name + ", 1 thread",
                        measureInTurns([&] { fetchOn(4, fetchAt); }, [&] { fetchOn(1, fetchAt); }),
                        parallelFetches));
  };
  add("SecItemCopyMatching", [](std::size_t index) { consume(fetchedValue(index)); });
  add("ZEBKeychain", [&](std::size_t index) {
    keychain->fetchPasswordForUsername(
        usernameAt(index), service, nullptr,
        [](const NSString& password, const NSError&) { consume(password); });
  });
});

}  // namespace

}  // namespace zeb::bench
