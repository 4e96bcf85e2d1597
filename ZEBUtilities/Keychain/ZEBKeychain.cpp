#include <Keychain/KeychainLogPrivate.h>
#include <Keychain/ZEBKeychain.h>
#include <Keychain/ZEBKeychainDefaultOrvaneConfiguration.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Dispatch/DispatchOnce.h>
#include <ZEBPlatform/Runtime/BlockConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>

#include <string>
#include <utility>

namespace zeb {

namespace {

constexpr std::string_view setFunction =
    "-[ZEBKeychain setPassword:forUsername:serviceName:accessGroup:completionBlock:]_block_invoke";
constexpr std::string_view setInBothGroupsFunction =
    "-[ZEBKeychain setPassword:forUsername:completionBlock:]_block_invoke";
constexpr std::string_view deleteFunction =
    "-[ZEBKeychain deletePasswordForUsername:serviceName:accessGroup:completionBlock:]"
    "_block_invoke";
constexpr std::string_view fetchFunction =
    "-[ZEBKeychain fetchPasswordForUsername:serviceName:accessGroup:completionBlock:]"
    "_block_invoke";

// "servicenName" and the missing blank after "accessGroup:" are deliberate, because log analysis
// looks for these texts.
constexpr std::string_view setMessage =
    "Failed to set password for username: %@; servicenName: %@, accessGroup: %@, errorCode: %zd";
constexpr std::string_view deleteMessage =
    "Failed to delete password for username: %@; serviceName: %@, accessGroup:%@, errorCode: %zd";
constexpr std::string_view fetchMessage =
    "Failed to fetch password for username: %@; serviceName: %@, accessGroup:%@, errorCode: %zd";

/// Logs the error, if there is one.
void logError(const NSError& error, std::string_view function, std::int32_t line,
              std::string_view message, const NSString& username, const NSString& serviceName,
              const NSString& accessGroup) {
  if (!error) return;
  detail::logKeychainLine(OLGLevelError, "ZEBUtilities/ZEBUtilities/ZEBKeychain", function, line,
                          message, username, serviceName, accessGroup, error.code());
}

struct SharedKeychain {
  detail::Lock lock;
  Ref<ZEBKeychain> keychain ZEB_GUARDED_BY(lock);
};

SharedKeychain& shared() {
  static detail::NeverDestroyed<SharedKeychain> shared;
  return *shared;
}

}  // namespace

Ref<ZEBKeychain> ZEBKeychain::sharedKeychain() {
  const detail::LockGuard guard(shared().lock);
  return shared().keychain;
}

void ZEBKeychain::createSharedKeychainWithConfiguration(
    const ProtocolRef<ZEBKeychainConfiguration>& configuration) {
  static dispatch_once_t once;
  dispatch_once(once, [&configuration] {
    auto keychain = makeRef<ZEBKeychain>(configuration);
    const detail::LockGuard guard(shared().lock);
    shared().keychain = std::move(keychain);
  });
}

void ZEBKeychain::createSharedKeychainWithDefaultOrvaneConfiguration() {
  createSharedKeychainWithConfiguration(makeRef<ZEBKeychainDefaultOrvaneConfiguration>());
}

bool ZEBKeychain::isDomainEqual(const NSString& domain) {
  return domain == NSString(KeychainItemUtilsErrorDomain);
}

ZEBKeychain::ZEBKeychain(const ProtocolRef<ZEBKeychainConfiguration>& configuration)
    : _keychainQueue(dispatch_queue_create(
          std::string(ZEBUtilitiesIdentifierPrefix) + ".ZEBKeychain.keychainQueue",
          DispatchQueueKind::concurrent)) {
  if (!configuration) return;
  setProviderServiceName(configuration->serviceName());
  setProviderSharedAccessGroup(configuration->sharedAccessGroup());
  setProviderDefaultAccessGroup(configuration->defaultAccessGroup());
}

NSString ZEBKeychain::name(NSString Names::* field) const {
  const detail::LockGuard guard(lock_);
  return names_.*field;
}

void ZEBKeychain::setName(NSString Names::* field, const NSString& name) {
  NSString exchanged = name.copy();  // then the old name, which is released without the lock
  const detail::LockGuard guard(lock_);
  std::swap(names_.*field, exchanged);
}

NSString ZEBKeychain::providerServiceName() const { return name(&Names::service); }
void ZEBKeychain::setProviderServiceName(const NSString& name) { setName(&Names::service, name); }
NSString ZEBKeychain::providerSharedAccessGroup() const { return name(&Names::sharedGroup); }
void ZEBKeychain::setProviderSharedAccessGroup(const NSString& group) {
  setName(&Names::sharedGroup, group);
}
NSString ZEBKeychain::providerDefaultAccessGroup() const { return name(&Names::defaultGroup); }
void ZEBKeychain::setProviderDefaultAccessGroup(const NSString& group) {
  setName(&Names::defaultGroup, group);
}

NSError ZEBKeychain::_setPassword(const NSString& password, const NSString& username,
                                  const NSString& serviceName, const NSString& accessGroup) {
  NSError error;
  KeychainItemUtils::storeUsername(username, password, serviceName, accessGroup, true, &error);
  return error;
}

NSError ZEBKeychain::_deletePasswordForUsername(const NSString& username,
                                                const NSString& serviceName,
                                                const NSString& accessGroup) {
  NSError error;
  KeychainItemUtils::deleteItemForUsername(username, serviceName, accessGroup, &error);
  return error;
}

NSString ZEBKeychain::_passwordForUsername(const NSString& username, const NSString& serviceName,
                                           const NSString& accessGroup, NSError* error) {
  return KeychainItemUtils::getPasswordForUsername(username, serviceName, accessGroup, error);
}

void ZEBKeychain::setPassword(const NSString& password, const NSString& username,
                              const NSString& serviceName, const NSString& accessGroup,
                              Completion completionBlock) {
  dispatch_barrier_sync(_keychainQueue, [&] {
    const NSError error = _setPassword(password, username, serviceName, accessGroup);
    logError(error, setFunction, 86, setMessage, username, serviceName, accessGroup);
    if (completionBlock) completionBlock(error);
  });
}

void ZEBKeychain::setPassword(const NSString& password, const NSString& username,
                              TwoGroupsCompletion completionBlock) {
  dispatch_barrier_sync(_keychainQueue, [&] {
    const auto setInGroup = [&](const NSString& group, std::int32_t line) {
      const NSString service = providerServiceName();
      const NSError error = _setPassword(password, username, service, group);
      logError(error, setInBothGroupsFunction, line, setMessage, username, service, group);
      return error;
    };
    const NSError defaultError = setInGroup(providerDefaultAccessGroup(), 102);
    const NSError sharedError = setInGroup(providerSharedAccessGroup(), 106);
    if (completionBlock) completionBlock(defaultError, sharedError);
  });
}

/// Runs on the queue.
void ZEBKeychain::deletePassword(const NSString& username, const NSString& serviceName,
                                 const NSString& accessGroup, Completion completionBlock) {
  const NSError error = _deletePasswordForUsername(username, serviceName, accessGroup);
  logError(error, deleteFunction, 119, deleteMessage, username, serviceName, accessGroup);
  if (completionBlock) completionBlock(error);
}

void ZEBKeychain::deletePasswordForUsername(const NSString& username, const NSString& serviceName,
                                            const NSString& accessGroup,
                                            Completion completionBlock) {
  dispatch_barrier_sync(
      _keychainQueue, [&] { deletePassword(username, serviceName, accessGroup, completionBlock); });
}

void ZEBKeychain::deletePasswordForUsername(const NSString& username, Completion completionBlock) {
  dispatch_barrier_sync(_keychainQueue, [&] {
    deletePassword(username, providerServiceName(), nullptr, completionBlock);
  });
}

/// Runs on the queue.
void ZEBKeychain::fetchPassword(const NSString& username, const NSString& serviceName,
                                const NSString& accessGroup, FetchCompletion completionBlock) {
  NSError error;
  const NSString password = _passwordForUsername(username, serviceName, accessGroup, &error);
  logError(error, fetchFunction, 140, fetchMessage, username, serviceName, accessGroup);
  if (completionBlock) completionBlock(password, error);
}

void ZEBKeychain::fetchPasswordForUsername(const NSString& username, const NSString& serviceName,
                                           const NSString& accessGroup,
                                           FetchCompletion completionBlock) {
  dispatch_sync(_keychainQueue,
                [&] { fetchPassword(username, serviceName, accessGroup, completionBlock); });
}

void ZEBKeychain::fetchPasswordForUsername(const NSString& username,
                                           FetchCompletion completionBlock) {
  dispatch_sync(_keychainQueue,
                [&] { fetchPassword(username, providerServiceName(), nullptr, completionBlock); });
}

void ZEBKeychain::migratePasswordForUserName(const NSString& username,
                                             TwoGroupsCompletion completionBlock) {
  dispatch_barrier_sync(_keychainQueue, [&] {
    const NSString service = providerServiceName();
    NSError firstError;
    NSError secondError;
    const NSString password = _passwordForUsername(username, service, nullptr, &firstError);
    if (!password.isNil()) {
      firstError = _setPassword(password, username, service, providerDefaultAccessGroup());
      secondError = _setPassword(password, username, service, providerSharedAccessGroup());
    }
    if (completionBlock) completionBlock(firstError, secondError);
  });
}

Class* ZEBKeychain::runtimeClass() {
  using Self = ZEBKeychain;
  using Text = const NSString&;
  using CompletionBlock = const Block<void(const NSError&)>&;
  using TwoGroupsBlock = const Block<void(const NSError&, const NSError&)>&;
  using FetchBlock = const Block<void(const NSString&, const NSError&)>&;
  static Class* const cls = registerClass(
      "ZEBKeychain",
      {
          classMethod("sharedKeychain", &Self::sharedKeychain),
          classMethod("createSharedKeychainWithConfiguration:",
                      &Self::createSharedKeychainWithConfiguration),
          classMethod("createSharedKeychainWithDefaultOrvaneConfiguration",
                      &Self::createSharedKeychainWithDefaultOrvaneConfiguration),
          classMethod("isDomainEqual:", &Self::isDomainEqual),
          classMethod("initWithConfiguration:",
                      [](const ProtocolRef<ZEBKeychainConfiguration>& configuration) {
                        return makeRef<Self>(configuration);
                      }),
          property("providerServiceName", &Self::providerServiceName,
                   &Self::setProviderServiceName),
          property("providerSharedAccessGroup", &Self::providerSharedAccessGroup,
                   &Self::setProviderSharedAccessGroup),
          property("providerDefaultAccessGroup", &Self::providerDefaultAccessGroup,
                   &Self::setProviderDefaultAccessGroup),
          method("setPassword:forUsername:serviceName:accessGroup:completionBlock:",
                 [](Self& self, Text password, Text username, Text serviceName, Text accessGroup,
                    CompletionBlock completion) {
                   self.setPassword(password, username, serviceName, accessGroup, completion);
                 }),
          method("setPassword:forUsername:completionBlock:",
                 [](Self& self, Text password, Text username, TwoGroupsBlock completion) {
                   self.setPassword(password, username, completion);
                 }),
          method("deletePasswordForUsername:serviceName:accessGroup:completionBlock:",
                 [](Self& self, Text username, Text serviceName, Text accessGroup,
                    CompletionBlock completion) {
                   self.deletePasswordForUsername(username, serviceName, accessGroup, completion);
                 }),
          method("deletePasswordForUsername:completionBlock:",
                 [](Self& self, Text username, CompletionBlock completion) {
                   self.deletePasswordForUsername(username, completion);
                 }),
          method("fetchPasswordForUsername:serviceName:accessGroup:completionBlock:",
                 [](Self& self, Text username, Text serviceName, Text accessGroup,
                    FetchBlock completion) {
                   self.fetchPasswordForUsername(username, serviceName, accessGroup, completion);
                 }),
          method("fetchPasswordForUsername:completionBlock:",
                 [](Self& self, Text username, FetchBlock completion) {
                   self.fetchPasswordForUsername(username, completion);
                 }),
          method("migratePasswordForUserName:completionBlock:",
                 [](Self& self, Text username, TwoGroupsBlock completion) {
                   self.migratePasswordForUserName(username, completion);
                 }),
      });
  return cls;
}

}  // namespace zeb
