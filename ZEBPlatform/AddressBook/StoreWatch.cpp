#include <ZEBPlatform/AddressBook/CNContactStore.h>
#include <ZEBPlatform/AddressBook/HostConfigurationPrivate.h>
#include <ZEBPlatform/AddressBook/LoggingPrivate.h>
#include <ZEBPlatform/AddressBook/StoreWatchPrivate.h>
#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Linux/detail/FolderWatch.h>
#include <ZEBPlatform/Linux/detail/Thread.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>

#include <memory>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace zeb::detail {

/// Reaches the stores' references. It is a class so that CNContactStore can name it as a friend.
class StoreWatch {
 public:
  static StoreWatch& shared() {
    static NeverDestroyed<StoreWatch> instance;
    return *instance;
  }

  void add(CNContactStore& store) ZEB_EXCLUDES(lock_) {
    LockGuard guard(lock_);
    stores_.insert(&store);
    if (run_ || start()) return;
    guard.unlock();
    logFailure();
  }

  void remove(CNContactStore& store) ZEB_EXCLUDES(lock_) {
    const LockGuard guard(lock_);
    stores_.erase(&store);
    if (stores_.empty()) stop();
  }

  void restart() ZEB_EXCLUDES(lock_) {
    LockGuard guard(lock_);
    if (stores_.empty()) return;
    stop();
    const bool isWatched = start();
    const std::vector<Ref<CNContactStore>> stores = livingStores();
    guard.unlock();
    if (!isWatched) logFailure();
    postTo(stores);
  }

 private:
  /// One run of the thread.
  struct Run {
    explicit Run(std::string folder) : watch(std::move(folder), isContactFileName) {}

    FolderWatch watch;
  };

  /// Setting up the watch makes some system calls, none of which waits for another thread. The lock
  /// is held meanwhile, so that each store that is added finds its folder watched. False if the
  /// system refuses.
  bool start() ZEB_REQUIRES(lock_) {
    std::string folder = contactsFolder(CNCurrentHostConfiguration());
    if (folder.empty()) return true;
    auto run = std::make_shared<Run>(std::move(folder));
    auto argument = std::make_unique<std::shared_ptr<Run>>(run);
    if (!run->watch.isWatching() ||
        !startServiceThread("zeb-contacts", &StoreWatch::watch, argument.get()))
      return false;
    static_cast<void>(argument.release());
    run_ = std::move(run);
    return true;
  }

  void stop() ZEB_REQUIRES(lock_) {
    if (run_) run_->watch.stop();
    run_.reset();
  }

  static void watch(void* argument) noexcept {
    const std::unique_ptr<std::shared_ptr<Run>> owner(static_cast<std::shared_ptr<Run>*>(argument));
    Run& run = **owner;
    for (;;) {
      switch (run.watch.wait()) {
        case FolderEvent::changed:
          shared().post(run);
          break;
        case FolderEvent::failed:
          shared().end(run);
          logFailure();
          return;
        case FolderEvent::stopped:
          return;
      }
    }
  }

  /// Lets the next store that is added try again.
  void end(const Run& run) ZEB_EXCLUDES(lock_) {
    const LockGuard guard(lock_);
    if (run_.get() == &run) run_.reset();
  }

  void post(const Run& run) ZEB_EXCLUDES(lock_) {
    LockGuard guard(lock_);
    if (run_.get() != &run) return;
    const std::vector<Ref<CNContactStore>> stores = livingStores();
    guard.unlock();
    postTo(stores);
  }

  std::vector<Ref<CNContactStore>> livingStores() ZEB_REQUIRES(lock_) {
    std::vector<Ref<CNContactStore>> alive;
    for (CNContactStore* store : stores_)
      if (store->retainUnlessDying()) alive.push_back(Ref<CNContactStore>::adopt(store));
    return alive;
  }

  static void postTo(const std::vector<Ref<CNContactStore>>& stores) {
    for (const Ref<CNContactStore>& store : stores) {
      NSNotificationCenter::defaultCenter()->postNotificationName(
          CNContactStoreDidChangeNotification, store);
    }
  }

  static void logFailure() {
    logAddressBook(
        OLGLevelWarning, "ZEBPlatform/AddressBook/StoreWatch", "StoreWatch::start", __LINE__,
        "The folder of contacts cannot be watched, so its changes are not noticed. Raise "
        "the system's limits fs.inotify.max_user_instances and "
        "fs.inotify.max_user_watches, or free descriptors or threads.");
  }

  Lock lock_;
  std::unordered_set<CNContactStore*> stores_ ZEB_GUARDED_BY(lock_);
  std::shared_ptr<Run> run_ ZEB_GUARDED_BY(lock_);
};

void addWatchingStore(CNContactStore& store) { StoreWatch::shared().add(store); }
void removeWatchingStore(CNContactStore& store) { StoreWatch::shared().remove(store); }
void watchOtherFolder() { StoreWatch::shared().restart(); }

}  // namespace zeb::detail
