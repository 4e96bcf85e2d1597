#pragma once

#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb {

class Class;

/// The domain of the errors of this class and of `ZEBKeychain`. The code is one of the two that
/// follow, else the status of the keychain (see Security/SecBase.h).
extern const char* const KeychainItemUtilsErrorDomain;

enum : std::int64_t {
  /// A username, service name or password is nil, or a password has no UTF-8 form because of an
  /// unpaired surrogate.
  KeychainItemUtilsErrorBadArguments = -2000,
  /// An item exists, but it has no password.
  KeychainItemUtilsErrorNoPassword = -1999,
};

/// Fetches, stores and deletes one password: a generic password item of the keychain
/// (Security/SecItem.h), identified by user name, service name and access group. A nil access group
/// means the keychain's default group (`SecKeychainDefaultAccessGroup`).
///
/// A password is kept as its UTF-8 bytes. The bytes that this class handles are overwritten when
/// they are no longer needed, and two passwords are compared in a time that does not depend on
/// where they differ. A password that is passed or returned as `NSString` is ordinary text: neither
/// it nor its copies are overwritten when they are freed. Errors and log lines contain user names,
/// service names and access groups, but never a password.
///
/// Any thread; takes no lock of its own. A call with several steps (a store that first fetches) is
/// not one atomic change: if two threads or processes store a password for the same new item at the
/// same time, one of them fails with `errSecDuplicateItem`. Failures are logged with level 3 on
/// `loggingChannel()`. The calls read and write files or ask a service, so they may take
/// milliseconds.
class KeychainItemUtils {
 public:
  KeychainItemUtils() = delete;

  /// The password; nil if there is none, which is not an error. `error` is set to nil first, and
  /// filled if the call fails; without `error` no error is made.
  ///
  /// A call makes two queries, one for the item's attributes and one for its password. If the item
  /// is not accessible after the first unlock (`kSecAttrAccessibleAfterFirstUnlock`), its
  /// accessibility is changed to that later, in a block of the main queue; the call does not wait
  /// for it, and its failure is only logged. Each fetch before that change posts another block. The
  /// change is made synchronously there: the main queue stands still while the store waits for its
  /// disk, its service or another process.
  ///
  /// Nil without an error also if the stored bytes are not UTF-8, which only other programs write.
  [[nodiscard]] static NSString getPasswordForUsername(const NSString& username,
                                                       const NSString& serviceName,
                                                       const NSString& accessGroup,
                                                       NSError* error = nullptr);

  /// Adds the item, or gives an existing one the new password. True on success, which leaves
  /// `error` untouched.
  ///   - If the stored password is the same, or `updateExisting` is false, the item stays as it is
  ///     and the call succeeds.
  ///   - Only items whose label is the service name are updated. This class labels its items so; an
  ///     item with another label gives `errSecItemNotFound`.
  ///   - An update keeps the accessibility. New items are accessible after the first unlock.
  ///   - An item without a password is deleted and added again. If it cannot be deleted, the call
  ///     fails with the error of the fetch, `KeychainItemUtilsErrorNoPassword`.
  ///   - An item whose bytes are not UTF-8 gives `errSecDuplicateItem`. Delete it first.
  static bool storeUsername(const NSString& username, const NSString& password,
                            const NSString& serviceName, const NSString& accessGroup,
                            bool updateExisting, NSError* error = nullptr);

  /// True on success, which leaves `error` untouched. An item that does not exist is a failure
  /// (`errSecItemNotFound`).
  ///
  /// Deliberately true without `error` even if the keychain reports a failure: callers that pass no
  /// place for the error are never told of it. Only a nil user name or service name is false then.
  static bool deleteItemForUsername(const NSString& username, const NSString& serviceName,
                                    const NSString& accessGroup, NSError* error = nullptr);

  /// The application's default channel (`OLGLogChannelApplicationDefault`) with "_Keychain"
  /// appended, as it is at the first call.
  static const NSString& loggingChannel();

  /// Registered as "KeychainItemUtils", with all functions here under their selectors.
  static Class* runtimeClass();
};

}  // namespace zeb
