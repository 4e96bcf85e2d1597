#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb {

class Class;

/// What login verification keeps for each user, and its backup codes. The values are generic
/// password items of the keychain (Security/SecItem.h) in its default access group.
///
/// Nothing raises or logs. Functions that add, set or delete are true on success; a keychain that
/// fails makes them false and the others nil, false or 0. Has no state; any thread. The calls read
/// and write files or ask a service, so they may take milliseconds.
///
/// The bytes that this class handles are overwritten when they are no longer needed, seeds that it
/// returns when the last reference is gone. Texts that are passed or returned as `NSString`, which
/// are keys of one-time passwords and backup codes, are ordinary: neither they nor their copies are
/// overwritten when they are freed. The same holds for seeds that the application makes itself.
///
/// All stored values follow one scheme. Names and selectors are deliberately irregular, and
/// "Vericiation" is deliberately misspelt: applications call them so.
///   - "adds" deletes the item of this value, user and service, and then adds one. If adding fails,
///     the former value is lost.
///   - "gets" reads the value. Without an item, or if its value is too short, the result is nil,
///     false or 0.
///   - "sets" adds an item; if that fails, for example because there is one, it replaces that one's
///     value. If this fails, too, the former value stays.
///   - "dels" deletes the item; without an item that is a failure.
/// Adding or setting a nil value is false and changes nothing. Numbers are kept in the byte order
/// of the machine.
class ZEBSecurityKey {
 public:
  ZEBSecurityKey() = delete;

  /// Six random bytes of the system's secure source; nil if that fails.
  [[nodiscard]] static NSData generateSeed();

  /// The backup code number `count` of a seed, 12 characters; nil for a seed that is nil or has
  /// fewer than six bytes while `count` is below 1.
  ///
  /// Beginning with the seed, `count` times takes the first 60 bits of the SHA-256 digest, and
  /// writes the last ones as base32 (see `base32String`). A count below 1 writes the seed itself,
  /// so that of six bytes the last two characters are "=". `length` is deliberately ignored: all
  /// codes have 12 characters.
  [[nodiscard]] static NSString hashStringWithSeed(const NSData& seed, std::int32_t count,
                                                   std::int32_t length);

  /// How many backup codes were used.
  static bool addsKeyCount(std::int32_t count, std::int64_t userID, const NSString& serviceName);
  static std::int32_t getsKeyCountForUser(std::int64_t userID, const NSString& serviceName);
  static bool setsKeyCount(std::int32_t count, std::int64_t userID, const NSString& serviceName);
  static bool delsKeyCountForUser(std::int64_t userID, const NSString& serviceName);

  /// The seed of the backup codes.
  static bool addsKeySeed(const NSData& seed, std::int64_t userID, const NSString& serviceName);
  static NSData getsKeySeed(std::int64_t userID, const NSString& serviceName);
  static bool setsKeySeed(const NSData& seed, std::int64_t userID, const NSString& serviceName);
  static bool delsKeySeedForUser(std::int64_t userID, const NSString& serviceName);

  /// Whether login verification is on.
  static bool addloginVerificationEnabled(bool enabled, std::int64_t userID,
                                          const NSString& serviceName);
  static bool getsloginVerificationEnabled(std::int64_t userID, const NSString& serviceName);
  static bool setsloginVerificationEnabled(bool enabled, std::int64_t userID,
                                           const NSString& serviceName);
  static bool delloginVericiationEnabledForUser(std::int64_t userID, const NSString& serviceName);

  /// The mode of login verification, as the application numbers them.
  static bool addsLoginVerificationMode(std::int32_t mode, std::int64_t userID,
                                        const NSString& serviceName);
  static std::int32_t getsLoginVerificationMode(std::int64_t userID, const NSString& serviceName);
  static bool setsLoginVerificationMode(std::int32_t mode, std::int64_t userID,
                                        const NSString& serviceName);
  static bool delsLoginVerificationModeForUser(std::int64_t userID, const NSString& serviceName);

  /// The key of time-based one-time passwords, kept as UTF-8. A text with an unpaired surrogate,
  /// which has no UTF-8 form, counts as nil.
  static bool addsTOTPKey(const NSString& key, std::int64_t userID, const NSString& serviceName);
  static NSString getsTOTPKeyForUser(std::int64_t userID, const NSString& serviceName);
  static bool setsTOTPKey(const NSString& key, std::int64_t userID, const NSString& serviceName);
  static bool delsTOTPKeyForUser(std::int64_t userID, const NSString& serviceName);

  /// Registered as "ZEBSecurityKey", with all functions here under their selectors.
  static Class* runtimeClass();

 private:
  /// The identity of a stored value's item: the identifier as generic attribute, the bytes of the
  /// user id as account, "<service name>.<identifier>" as service.
  static NSDictionary _newSearchDictionary(const char* identifier, std::int64_t userID,
                                           const NSString& serviceName);
};

}  // namespace zeb
