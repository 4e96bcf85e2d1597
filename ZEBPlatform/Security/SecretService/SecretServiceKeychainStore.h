#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Security/KeychainStore.h>

#include <cstdint>
#include <memory>

namespace zeb {

class ServiceCollection;
class ServiceConnection;

/// How a `SecretServiceKeychainStore` uses the service.
struct SecretServiceOptions {
  /// What happens when the collection is locked, or when the service wants a confirmation.
  enum class Prompting : std::uint8_t {
    never,   ///< The call fails with `errSecInteractionNotAllowed`.
    allowed  ///< The service asks the user, and the call waits for the answer.
  };

  /// The alias of the collection, such as "default" or "session", or its label, such as "Login",
  /// but not empty; nil means the default collection. The store never makes a collection.
  NSString collection = nullptr;
  Prompting prompting = Prompting::never;
  /// For how long one call of the store waits for the service, and for other calls to finish.
  NSTimeInterval timeout = 30;
  /// For how long the user may think about one question.
  NSTimeInterval promptTimeout = 120;
};

/// The keychain of the user's desktop: items in a collection of the Secret Service, the interface
/// org.freedesktop.secrets on the session bus, which keyrings and password managers offer. The host
/// chooses it with `SecKeychainSetStore`. Secrets of other programs are neither read nor changed,
/// because all items of the store carry a schema name of their own.
///
/// Protection: the service encrypts the collection on the disk with the user's password, and values
/// cross the bus encrypted for the session. While the collection is unlocked, every program of the
/// user can read it. Attributes are not secret: the service may store them unencrypted or as
/// digests, and shows them to the user.
///
/// Statuses:
///   - `errSecNotAvailable`: there is no session bus, no service or no such collection; the service
///     offers only sessions whose secrets are not encrypted; the service did not answer in time,
///     or calls of other processes did not end in time. The next call connects again, also with a
///     service that was started anew. The session bus is that of the variable
///     DBUS_SESSION_BUS_ADDRESS, or "bus" in XDG_RUNTIME_DIR; none is ever started.
///   - `errSecInteractionNotAllowed`: the collection is locked, or the user refused. A locked
///     collection is never taken for an empty one. The user is asked to unlock it only before the
///     call begins its work; if it is locked during the work, the call fails.
///   - `errSecDecode`: another program damaged one of our items, which can still be removed.
///   - `errSecParam`: an attribute is not of its kind, an attribute or value is too long, a new
///     item has no access group, or the name of the collection is empty or not well-formed.
///   - `errSecIO`: the service reported anything else.
/// A call ends after the time limits of the options or, if it has to be taken back, after `timeout`
/// more.
///
/// Several processes: a call that changes items excludes all other calls by a lock on the folder
/// "zebutilities" in the user's runtime folder (XDG_RUNTIME_DIR, else the cache folder). Processes
/// that share a collection must have the same one. Calls that begin after a change has begun to
/// wait for the lock wait for that change. A service that wants each change confirmed asks the user
/// while the lock is held; calls of other processes may end with `errSecNotAvailable` meanwhile.
///
/// All or none: adding or removing one item is one change of the service. If a call that needs
/// several changes fails in its course, the store takes back what it has done, except that removed
/// items whose values were damaged stay removed. It cannot if the process is killed or the service
/// disappears at this moment: then a part of several new items may be stored, a part of several
/// items may be removed, or an updated item may have its new value with its old attributes. After a
/// time-out the service may still carry out the change that it did not confirm.
///
/// Items are ordered by the wall clock's time at which they were added.
///
/// Threads: any; GLib starts threads of its own for the connection. Fork: a process whose parent
/// has used such a store cannot use one until it runs another program; its calls return
/// `errSecNotAvailable`.
class SecretServiceKeychainStore : public KeychainStore {
 public:
  /// Connects only when it is used.
  explicit SecretServiceKeychainStore(SecretServiceOptions options = {});
  ~SecretServiceKeychainStore() override;

  /// Whether the collection can be used now: `errSecSuccess`, `errSecNotAvailable` or
  /// `errSecInteractionNotAllowed`, as above. For hosts that choose a store when they start.
  OSStatus availability();

  OSStatus add(std::span<const KeychainItem> items) override;
  OSStatus find(const KeychainQuery& query, Values values, std::size_t maxCount,
                std::vector<KeychainItem>& found) override;
  OSStatus update(const KeychainQuery& query, const KeychainItem& changes) override;
  OSStatus remove(const KeychainQuery& query) override;

 private:
  enum class Access : std::uint8_t { read, write };

  /// Runs the work on the unlocked collection, under the lock of the processes.
  OSStatus perform(Access access, FunctionView<OSStatus(ServiceCollection&)> work);
  OSStatus openCollection(ServiceCollection& collection);

  const SecretServiceOptions options_;
  detail::Lock lock_;
  std::shared_ptr<ServiceConnection> connection_ ZEB_GUARDED_BY(lock_);
};

}  // namespace zeb
