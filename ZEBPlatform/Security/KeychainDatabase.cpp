#include <ZEBPlatform/Concurrency/detail/Condition.h>
#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Linux/detail/FileLock.h>
#include <ZEBPlatform/Linux/detail/ForkHandlers.h>
#include <ZEBPlatform/Security/KeychainDatabasePrivate.h>

#include <algorithm>
#include <bit>
#include <utility>

namespace zeb {

namespace {

/// How long an opening waits for another process that makes the same store.
constexpr double maxSetUpWaitSeconds = 10;

constexpr const char* databaseName = "/keychain.db";

/// Whether SQLite's write-ahead log lies beside the database.
bool hasLog(const std::string& database) {
  FileIdentity log;
  return identifyFile(database + "-wal", log) == 0;
}

}  // namespace

/// The databases of the process. One lock guards the connections of all of them, because a fork
/// must wait for all.
struct KeychainDatabase::Registry {
  detail::Lock lock;
  detail::Condition changed;
  std::vector<KeychainDatabase*> databases ZEB_GUARDED_BY(lock);
  std::size_t uses ZEB_GUARDED_BY(lock) = 0;  ///< calls of SQLite that are running
  /// Forks and examinations of files, which need all connections closed: nothing new is used.
  std::size_t pauses ZEB_GUARDED_BY(lock) = 0;
  bool isOpening ZEB_GUARDED_BY(lock) = false;

  Registry() { callAroundForks(&beforeFork, &afterForkInParent, &afterForkInChild); }

  void beginUse() ZEB_REQUIRES(lock) {
    while (pauses > 0) changed.wait(lock);
    ++uses;
  }
  void endUse() ZEB_REQUIRES(lock) {
    --uses;
    changed.notifyAll();
  }
  /// Closes all connections after waiting until no more than `ownUses` calls are running.
  void beginPause(std::size_t ownUses) ZEB_REQUIRES(lock);
  void endPause() ZEB_REQUIRES(lock) {
    --pauses;
    changed.notifyAll();
  }
};

KeychainDatabase::Registry& KeychainDatabase::registry() {
  static detail::NeverDestroyed<Registry> registry;
  return *registry;
}

void KeychainDatabase::Registry::beginPause(std::size_t ownUses) {
  ++pauses;
  while (uses > ownUses) changed.wait(lock);
  for (KeychainDatabase* const database : databases) {
    for (Connection& connection : database->connections_) {
      // A checkpoint would make the pause wait for the disk.
      if (connection) connection->keepLogWhenClosed();
      connection.reset();
    }
  }
}

// The lock is held during the fork, so that both processes begin with a state that no other thread
// was changing. Closing connections under it blocks only threads that would have to wait anyway.
ZEB_UNCHECKED_LOCKING void KeychainDatabase::beforeFork() {
  Registry& all = registry();
  all.lock.lock();
  all.beginPause(0);
}

ZEB_UNCHECKED_LOCKING void KeychainDatabase::afterForkInParent() {
  Registry& all = registry();
  all.endPause();
  all.lock.unlock();
}

// Other threads that were about to fork do not exist in the child.
ZEB_UNCHECKED_LOCKING void KeychainDatabase::afterForkInChild() {
  Registry& all = registry();
  all.pauses = 0;
  all.lock.unlock();
}

/// Closes the connections of a database that nobody uses any more.
struct KeychainDatabase::Closer {
  void operator()(KeychainDatabase* database) const noexcept {
    Registry& all = registry();
    {
      detail::LockGuard guard(all.lock);
      all.beginUse();
    }
    for (Connection& connection : database->connections_) connection.reset();
    {
      const detail::LockGuard guard(all.lock);
      std::erase(all.databases, database);
      all.endUse();
    }
    delete database;
  }
};

/// The only opening that is running in the process, so that one store of a folder is opened once.
class KeychainDatabase::Opening {
 public:
  explicit Opening(const std::string& path) : all_(registry()) {
    detail::LockGuard guard(all_.lock);
    for (;;) {
      if (all_.isOpening || all_.pauses > 0) {
        all_.changed.wait(all_.lock);
        continue;
      }
      const auto found = std::ranges::find_if(all_.databases, [&](const KeychainDatabase* other) {
        return !other->isReplaced_ && other->path_ == path;
      });
      if (found == all_.databases.end()) break;
      existing_ = (*found)->weak_from_this().lock();
      if (existing_) break;
      all_.changed.wait(all_.lock);  // its last owner is closing it
    }
    all_.isOpening = true;
    all_.beginUse();
  }
  Opening(const Opening&) = delete;
  Opening& operator=(const Opening&) = delete;
  ~Opening() {
    const detail::LockGuard guard(all_.lock);
    all_.isOpening = false;
    all_.endUse();
  }

  const std::shared_ptr<KeychainDatabase>& existing() const noexcept { return existing_; }

  /// Examines the file while the process has no connection, because one to the same file may be
  /// open under another path: the folder was moved, or is mounted twice.
  OSStatus examine(const std::string& path, DatabaseFile& found) {
    const detail::LockGuard guard(all_.lock);
    all_.beginPause(1);
    const OSStatus status = examineDatabaseFile(path, found);
    all_.endPause();
    return status;
  }
  void forgetExisting() {
    const detail::LockGuard guard(all_.lock);
    existing_->isReplaced_ = true;
  }
  void add(KeychainDatabase* database) {
    const detail::LockGuard guard(all_.lock);
    all_.databases.push_back(database);
  }

 private:
  Registry& all_;
  std::shared_ptr<KeychainDatabase> existing_;
};

KeychainDatabase::KeychainDatabase(std::string path) : path_(std::move(path)) {}

OSStatus KeychainDatabase::connect(const std::string& path, Connection& connection,
                                   KeychainKeyFacts& facts) {
  connection = std::make_unique<SQLiteConnection>();
  OSStatus status = connection->open(path);
  if (!status) status = readKeyFacts(*connection, facts);
  if (status != errSecWrPerm && status != errSecNotAvailable) return status;
  // SQLite cannot make the write-ahead log. Without one, the file alone is the whole database.
  const std::string folder = path.substr(0, path.rfind('/'));
  if (isFolderWritable(folder) || hasLog(path)) return status;
  connection = std::make_unique<SQLiteConnection>();
  status = connection->openUnchanging(path);
  if (!status) status = readKeyFacts(*connection, facts);
  return status;
}

OSStatus KeychainDatabase::connectFirst(const std::string& path,
                                        std::shared_ptr<KeychainDatabase>& result) {
  // The caller releases the database also after a failure, because closing waits for forks, which
  // wait for the opening that is running. No connection is left in it then, because a fork would
  // not close it.
  result = std::shared_ptr<KeychainDatabase>(new KeychainDatabase(path), Closer());
  Connection connection;
  OSStatus status = connect(path, connection, result->facts_);
  if (!status) status = statusOfErrorNumber(identifyFile(path, result->file_));
  if (!status && connection->isReusable()) result->connections_[maxReaders] = std::move(connection);
  return status;
}

OSStatus KeychainDatabase::open(const std::string& folder, KeychainKeyFinder& finder,
                                SecretBytes& key, std::shared_ptr<KeychainDatabase>& database) {
  const std::string path = folder + databaseName;
  std::shared_ptr<KeychainDatabase> opened;
  {
    Opening opening(path);
    FileIdentity file;
    opened = opening.existing();
    if (opened && (identifyFile(path, file) != 0 || file != opened->file_)) {
      opening.forgetExisting();
      opened = nullptr;
    }
    if (!opened) {
      DatabaseFile found;
      OSStatus status = opening.examine(path, found);
      if (status) return status;
      if (found == DatabaseFile::missing) {
        FileLock lock;
        status = statusOfErrorNumber(lock.acquire(folder, maxSetUpWaitSeconds));
        if (!status) status = opening.examine(path, found);
        if (!status && found == DatabaseFile::missing) {
          // SQLite would take the log of a database that is gone for one of the new database.
          if (hasLog(path)) return errSecInvalidKeychain;
          KeychainKeyFacts facts;
          status = finder.makeNew(key, facts);
          if (!status) status = writeNewDatabaseFile(path, facts);
        }
        if (status) return status;
      }
      status = connectFirst(path, opened);
      if (status) return status;
      opening.add(opened.get());
    }
  }
  if (key.empty()) {
    if (const OSStatus status = finder.find(opened->facts_, key)) return status;
  }
  database = std::move(opened);
  return errSecSuccess;
}

KeychainDatabase::Lease::Lease(KeychainDatabase& database, Access access) : database_(database) {
  constexpr std::uint32_t readers = (1u << maxReaders) - 1;
  const std::uint32_t usable = access == Access::reads ? readers : 1u << maxReaders;
  Registry& all = registry();
  const detail::LockGuard guard(all.lock);
  while (all.pauses > 0 || (usable & ~database_.leased_) == 0) all.changed.wait(all.lock);
  // The first free place, so that no more connections are opened than are used at a time.
  place_ = static_cast<std::size_t>(std::countr_zero(usable & ~database_.leased_));
  database_.leased_ |= 1u << place_;
  connection_ = std::move(database_.connections_[place_]);
  all.beginUse();
}

OSStatus KeychainDatabase::Lease::prepare() {
  if (connection_ && !connection_->isFileGone()) return errSecSuccess;
  KeychainKeyFacts facts;
  OSStatus status = connect(database_.path_, connection_, facts);
  // Another store may have taken the place of the file.
  if (!status && facts.check != database_.facts_.check) status = errSecInvalidKeychain;
  if (status) connection_ = nullptr;
  return status;
}

KeychainDatabase::Lease::~Lease() {
  if (connection_ && !connection_->isReusable()) connection_ = nullptr;
  if (connection_) connection_->trimStatements();
  Registry& all = registry();
  const detail::LockGuard guard(all.lock);
  database_.leased_ &= ~(1u << place_);
  database_.connections_[place_] = std::move(connection_);
  all.endUse();
}

}  // namespace zeb
