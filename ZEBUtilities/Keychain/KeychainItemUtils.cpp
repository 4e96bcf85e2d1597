#include <Keychain/KeychainItemUtils.h>
#include <Keychain/KeychainLogPrivate.h>
#include <Keychain/SecretTextPrivate.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Runtime/ErrorConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBPlatform/Security/SecItem.h>
#include <ZEBPlatform/Security/SecretBytes.h>

#include <optional>
#include <utility>

namespace zeb {

const char* const KeychainItemUtilsErrorDomain = "KeychainItemUtilsErrorDomain";

namespace {

constexpr std::string_view sourceFile = "ZEBUtilities/ZEBUtilities/KeychainItemUtils";
constexpr std::string_view fetchFunction =
    "+[KeychainItemUtils getPasswordForUsername:andServiceName:accessGroup:error:]";
constexpr std::string_view storeFunction =
    "+[KeychainItemUtils "
    "storeUsername:andPassword:forServiceName:accessGroup:updateExisting:error:]";
constexpr std::string_view deleteFunction =
    "+[KeychainItemUtils deleteItemForUsername:andServiceName:accessGroup:error:]";

template <class... Arguments>
void log(OLGLevel level, std::string_view function, std::int32_t line, std::string_view format,
         const Arguments&... arguments) {
  detail::logKeychainLine(level, sourceFile, function, line, format, arguments...);
}

/// Fills the caller's error, if there is a place for it.
void setError(NSError* error, std::int64_t code) {
  if (error) *error = NSError(KeychainItemUtilsErrorDomain, code);
}

/// The same with a description, which is formatted only if there is a place for it.
template <class... Arguments>
void describeError(NSError* error, std::int64_t code, std::string_view format,
                   const Arguments&... arguments) {
  if (!error) return;
  *error = NSError(KeychainItemUtilsErrorDomain, code,
                   {{NSLocalizedDescriptionKey, NSString::stringWithFormat(format, arguments...)}});
}

/// The attributes that identify the item. The texts are copied, because a query may be used after
/// the call has returned.
NSDictionary identityOf(const NSString& username, const NSString& serviceName,
                        const NSString& accessGroup) {
  NSMutableDictionary identity{{kSecClass, kSecClassGenericPassword},
                               {kSecAttrAccount, username.copy()},
                               {kSecAttrService, serviceName.copy()}};
  if (!accessGroup.isNil()) identity.setObject(accessGroup.copy(), kSecAttrAccessGroup);
  return identity;
}

NSDictionary queryWith(const NSDictionary& identity, const char* wantedResult) {
  NSMutableDictionary query(identity);
  query.setObject(true, wantedResult);
  return query;
}

void migrateAccessibility(const NSDictionary& identity, const NSString& serviceName) {
  log(OLGLevelWarning, fetchFunction, 89, "'%@' Migrating keychain password access level.",
      serviceName);
  dispatch_async(
      dispatch_get_main_queue(), [query = identity.copy(), serviceName = serviceName.copy()] {
        const OSStatus status =
            SecItemUpdate(query, {{kSecAttrAccessible, kSecAttrAccessibleAfterFirstUnlock}});
        if (status == errSecSuccess) return;
        log(OLGLevelError, fetchFunction, 95,
            "'%@' Error %d when migrating keychain password access level.", serviceName, status);
      });
}

bool isSamePassword(const NSString& stored, const SecretBytes& password) {
  const std::optional<SecretBytes> storedBytes = detail::secretUTF8(stored);
  return storedBytes && SecretBytes::equal(storedBytes->bytes(), password.bytes());
}

OSStatus updatePassword(const NSDictionary& identity, const NSString& serviceName,
                        SecretBytes password) {
  NSMutableDictionary query(identity);
  query.setObject(serviceName.copy(), kSecAttrLabel);
  const OSStatus status =
      SecItemUpdate(query, {{kSecValueData, SecretBytes::dataByAdopting(std::move(password))}});
  if (status != errSecSuccess) {
    log(OLGLevelError, storeFunction, 234, "'%@' Error %d failed to update existing password entry",
        serviceName, status);
  }
  return status;
}

OSStatus addPassword(const NSDictionary& identity, const NSString& serviceName,
                     SecretBytes password) {
  NSMutableDictionary attributes(identity);
  attributes.setObject(serviceName.copy(), kSecAttrLabel);
  attributes.setObject(SecretBytes::dataByAdopting(std::move(password)), kSecValueData);
  attributes.setObject(kSecAttrAccessibleAfterFirstUnlock, kSecAttrAccessible);
  const OSStatus status = SecItemAdd(attributes);
  if (status != errSecSuccess) {
    log(OLGLevelError, storeFunction, 259, "'%@' Error %d failed to create new password entry",
        serviceName, status);
  }
  return status;
}

}  // namespace

NSString KeychainItemUtils::getPasswordForUsername(const NSString& username,
                                                   const NSString& serviceName,
                                                   const NSString& accessGroup, NSError* error) {
  if (error) *error = nullptr;
  if (username.isNil() || serviceName.isNil()) {
    describeError(error, KeychainItemUtilsErrorBadArguments,
                  "getPasswordForUsername bad username/serviceName: username %@, serviceName: %@",
                  username, serviceName);
    return nullptr;
  }
  const NSDictionary identity = identityOf(username, serviceName, accessGroup);

  Value attributes;
  OSStatus status = SecItemCopyMatching(queryWith(identity, kSecReturnAttributes), &attributes);
  if (status == errSecItemNotFound) return nullptr;
  if (status != errSecSuccess) {
    log(OLGLevelError, fetchFunction, 104, "'%@' Error %d when querying for keychain password",
        serviceName, status);
    describeError(error, status, "Error in SecItemCopyMatching w/ status code %d", status);
    return nullptr;
  }
  if (NSString(NSDictionary(attributes)[kSecAttrAccessible]) !=
      NSString(kSecAttrAccessibleAfterFirstUnlock)) {
    migrateAccessibility(identity, serviceName);
  }

  Value password;
  status = SecItemCopyMatching(queryWith(identity, kSecReturnData), &password);
  if (status != errSecSuccess) {
    // The message has deliberately no blank after the quote.
    log(OLGLevelError, fetchFunction, 123, "'%@'Error %d when retrieving keychain password",
        serviceName, status);
    if (status == errSecItemNotFound) {
      log(OLGLevelError, fetchFunction, 126,
          "'%@' ... error is indicative that we found a password entry that is invalid",
          serviceName);
      describeError(error, KeychainItemUtilsErrorNoPassword,
                    "This is a special case when fetching password where we had attributes but no "
                    "password (bad persist?\?)");
    } else {
      describeError(error, status, "Error with SecItemCopyMatching when retrieving password: %d",
                    status);
    }
    return nullptr;
  }
  // This platform's SecItemCopyMatching never succeeds without data here. The branch is kept so
  // that the failure is reported if that changes.
  if (!password.isData()) {
    log(OLGLevelError, fetchFunction, 153, "'%@' Keychain password data could not be retrieved",
        serviceName);
    describeError(error, KeychainItemUtilsErrorNoPassword,
                  "Error! Found password item but no password data!");
    return nullptr;
  }
  return NSString::stringWithUTF8(NSData(password).view());
}

bool KeychainItemUtils::storeUsername(const NSString& username, const NSString& password,
                                      const NSString& serviceName, const NSString& accessGroup,
                                      bool updateExisting, NSError* error) {
  std::optional<SecretBytes> newPassword = detail::secretUTF8(password);
  if (username.isNil() || serviceName.isNil() || !newPassword) {
    setError(error, KeychainItemUtilsErrorBadArguments);
    return false;
  }

  NSError fetchError;
  const NSString existing = getPasswordForUsername(username, serviceName, accessGroup, &fetchError);
  const NSDictionary identity = identityOf(username, serviceName, accessGroup);
  OSStatus status = errSecSuccess;
  if (!existing.isNil()) {
    if (!updateExisting || isSamePassword(existing, *newPassword)) return true;
    status = updatePassword(identity, serviceName, std::move(*newPassword));
  } else {
    NSError deleteError;
    const bool canAdd =
        fetchError.code() == KeychainItemUtilsErrorNoPassword
            ? deleteItemForUsername(username, serviceName, accessGroup, &deleteError)
            : fetchError.code() == 0;
    if (!canAdd) {
      if (error) *error = fetchError;
      return false;
    }
    status = addPassword(identity, serviceName, std::move(*newPassword));
  }
  if (status == errSecSuccess) return true;
  setError(error, status);
  return false;
}

bool KeychainItemUtils::deleteItemForUsername(const NSString& username, const NSString& serviceName,
                                              const NSString& accessGroup, NSError* error) {
  if (username.isNil() || serviceName.isNil()) {
    setError(error, KeychainItemUtilsErrorBadArguments);
    return false;
  }
  const OSStatus status = SecItemDelete(
      queryWith(identityOf(username, serviceName, accessGroup), kSecReturnAttributes));
  if (status == errSecSuccess) return true;
  log(OLGLevelError, deleteFunction, 297, "'%@' Error %d failed to delete password entry",
      serviceName, status);
  setError(error, status);
  return !error;
}

const NSString& KeychainItemUtils::loggingChannel() {
  static const detail::NeverDestroyed<NSString> channel(OLGLogChannelApplicationDefault() +
                                                        "_Keychain");
  return *channel;
}

Class* KeychainItemUtils::runtimeClass() {
  using Self = KeychainItemUtils;
  static Class* const cls = registerClass(
      "KeychainItemUtils",
      {
          classMethod("getPasswordForUsername:andServiceName:accessGroup:error:",
                      &Self::getPasswordForUsername),
          classMethod("storeUsername:andPassword:forServiceName:accessGroup:updateExisting:error:",
                      &Self::storeUsername),
          classMethod("deleteItemForUsername:andServiceName:accessGroup:error:",
                      &Self::deleteItemForUsername),
          classMethod("loggingChannel", &Self::loggingChannel),
      });
  return cls;
}

}  // namespace zeb
