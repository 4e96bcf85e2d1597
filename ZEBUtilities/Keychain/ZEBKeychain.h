#pragma once

#include <Keychain/ZEBKeychainConfiguration.h>
#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/ProtocolRef.h>

namespace zeb {

/// An application's passwords and tokens, some of which it shares with its extensions. It knows a
/// service name and two access groups, the application's own ("default") and the shared one, and
/// works on them with `KeychainItemUtils`, which says what is protected and what is not. The place
/// of the items is that of `SecItemAdd` (see Security/SecKeychain.h).
///
/// Errors are of `KeychainItemUtilsErrorDomain` and are also logged with level 3, except those of a
/// migration. A password that does not exist is not an error for a fetch, but is one
/// (`errSecItemNotFound`) for a deletion. A store replaces an existing password.
///
/// **Threads.** Any thread. Every operation runs as one block of the keychain's concurrent queue
/// and has ended when the call returns. Fetches run at the same time as other fetches; stores,
/// deletions and migrations run alone. The completion block, which may be nil, is called once, on
/// the calling thread, inside that block, before the call returns. Never use the keychain inside a
/// completion block of the same keychain: the operation would wait for the block that it is called
/// in, which is a deadlock (on the same thread the queue notices it and stops the process). The
/// properties can be used there. An exception of the completion block goes to the caller.
///
/// **Access groups.** The operations without a service name store into both groups, but fetch and
/// delete without a group, which means the keychain's own default group. So they find what they
/// stored only if the configuration's default group is nil or equals the keychain's:
///
///     SecKeychainSetDefaultAccessGroup("TEAM.org.example.reader");
///     // The configuration's defaultAccessGroup() is "TEAM.org.example.reader", too.
///     keychain->setPassword("secret", "ada", nullptr);        // into both groups
///     keychain->fetchPasswordForUsername("ada", completion);  // from the default group
///
/// With `ZEBKeychainDefaultOrvaneConfiguration`, and if no other group was set, both are made of
/// the same entries of the Info.plist and are equal. A nil group of the configuration also means
/// the keychain's default group; so with a nil shared group the second store is without a group. A
/// deletion without a service name leaves the copy in the shared group.
class ZEBKeychain : public NSObject {
 public:
  using Completion = FunctionView<void(const NSError& error)>;
  /// The arguments: the error in the default group, the error in the shared group.
  using TwoGroupsCompletion =
      FunctionView<void(const NSError& defaultError, const NSError& sharedError)>;
  using FetchCompletion = FunctionView<void(const NSString& password, const NSError& error)>;

  /// Nil until one of the two functions that follow has been called.
  static Ref<ZEBKeychain> sharedKeychain();
  /// Makes the shared keychain, once per process: later calls of either function do nothing.
  static void createSharedKeychainWithConfiguration(
      const ProtocolRef<ZEBKeychainConfiguration>& configuration);
  /// The same with a `ZEBKeychainDefaultOrvaneConfiguration`.
  static void createSharedKeychainWithDefaultOrvaneConfiguration();

  /// Whether it is `KeychainItemUtilsErrorDomain`.
  [[nodiscard]] static bool isDomainEqual(const NSString& domain);

  /// Copies the names of the configuration. A nil configuration has none, so that the operations
  /// without a service name fail.
  explicit ZEBKeychain(const ProtocolRef<ZEBKeychainConfiguration>& configuration);

  /// Registered as "ZEBKeychain", with all functions here under their selectors. There, the
  /// initialiser is a class method, a configuration is an object that implements the protocol, and
  /// completions are of the type `Block`, with the same arguments.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  /// Operations read these when their block runs. Any thread may change them.
  NSString providerServiceName() const;
  void setProviderServiceName(const NSString& name);
  NSString providerSharedAccessGroup() const;
  void setProviderSharedAccessGroup(const NSString& group);
  NSString providerDefaultAccessGroup() const;
  void setProviderDefaultAccessGroup(const NSString& group);

  void setPassword(const NSString& password, const NSString& username, const NSString& serviceName,
                   const NSString& accessGroup, Completion completionBlock);
  /// Stores with the provider's service name into the default group and then into the shared group,
  /// into the latter even if the former failed.
  void setPassword(const NSString& password, const NSString& username,
                   TwoGroupsCompletion completionBlock);

  void deletePasswordForUsername(const NSString& username, const NSString& serviceName,
                                 const NSString& accessGroup, Completion completionBlock);
  /// With the provider's service name and no access group.
  void deletePasswordForUsername(const NSString& username, Completion completionBlock);

  void fetchPasswordForUsername(const NSString& username, const NSString& serviceName,
                                const NSString& accessGroup, FetchCompletion completionBlock);
  /// With the provider's service name and no access group.
  void fetchPasswordForUsername(const NSString& username, FetchCompletion completionBlock);

  /// Copies the password with the provider's service name and no access group into both groups and
  /// leaves the original. If it cannot be fetched, the completion's arguments are the error of the
  /// fetch and nil; both are nil if there is no such password.
  void migratePasswordForUserName(const NSString& username, TwoGroupsCompletion completionBlock);

 private:
  struct Names {
    NSString service;
    NSString sharedGroup;
    NSString defaultGroup;
  };

  NSString name(NSString Names::* field) const;
  void setName(NSString Names::* field, const NSString& name);

  static NSError _setPassword(const NSString& password, const NSString& username,
                              const NSString& serviceName, const NSString& accessGroup);
  static NSError _deletePasswordForUsername(const NSString& username, const NSString& serviceName,
                                            const NSString& accessGroup);
  static NSString _passwordForUsername(const NSString& username, const NSString& serviceName,
                                       const NSString& accessGroup, NSError* error);
  static void deletePassword(const NSString& username, const NSString& serviceName,
                             const NSString& accessGroup, Completion completionBlock);
  static void fetchPassword(const NSString& username, const NSString& serviceName,
                            const NSString& accessGroup, FetchCompletion completionBlock);

  mutable detail::Lock lock_;
  Names names_ ZEB_GUARDED_BY(lock_);
  const dispatch_queue_t _keychainQueue;
};

}  // namespace zeb
