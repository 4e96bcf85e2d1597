#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb {

class Class;

/// The RSA key pair with which a signed-in user approves logins from this device: 2048 bits, one
/// pair for each user, both halves kept as key items of the keychain (Security/SecItem.h) in its
/// default access group. The service gets the public half and verifies what the private half signs.
///
/// The halves are found by their application tags. User 0 stands for no user: it gets no keys.
/// Nothing raises or logs; a keychain that fails gives nil. Has no state; any thread. The calls
/// read and write files or ask a service, so they may take milliseconds, and generating a pair
/// takes a tenth of a second and more.
class ZEBRSAOperations {
 public:
  ZEBRSAOperations() = delete;

  /// `ZEBUtilitiesIdentifierPrefix`, then ".2fa.publickey_" or ".2fa.privatekey_" and the user id.
  /// The items have the UTF-8 bytes as their application tags.
  [[nodiscard]] static NSString publicKeyTagForUserid(std::int64_t userID);
  [[nodiscard]] static NSString privateKeyTagForUserid(std::int64_t userID);

  /// Finds the public key as data, PKCS #1 in DER: class, application tag, key type and
  /// kSecReturnData.
  [[nodiscard]] static NSDictionary publicKeyQueryDictionaryForUserid(std::int64_t userID);
  /// Finds the private key as a reference: the same with kSecReturnRef.
  [[nodiscard]] static NSDictionary privateKeyQueryDictionaryForUserid(std::int64_t userID);

  /// Makes and stores the user's pair, both halves or none. A user who has a pair keeps it. One
  /// half alone, such as an interrupted deletion leaves, is deleted first. The result of the
  /// keychain is deliberately not checked: whether there is a pair is what `base64PublicKeyForUser`
  /// tells.
  static void generateKeyPairForUser(std::int64_t userID);
  /// Deletes both halves, if they are there, in two steps: first the public one.
  static void deleteKeyPairForUser(std::int64_t userID);

  /// The user's signature of the data: PKCS #1 version 1.5 with SHA-1 (RFC 8017, section 8.2), as
  /// long as the key, 256 bytes. Nil for nil data, for user 0 and without a private key.
  [[nodiscard]] static NSData signData(const NSData& data, std::int64_t userID);

  /// The user's public key as SubjectPublicKeyInfo (RFC 5280, section 4.1) in base64: lines of 64
  /// characters separated by CR LF, without one after the last line. That is the content of a PEM
  /// file between its first and its last line. Nil for user 0 and without a public key.
  ///
  /// Deliberately exact only for lengths below 512, such as those of the pairs made here: a length
  /// L above 127 is written as (L >> 8) + 1 bytes, which is more than needed for longer keys.
  [[nodiscard]] static NSString base64PublicKeyForUser(std::int64_t userID);

  /// Registered as "ZEBRSAOperations", with all functions here under their selectors.
  static Class* runtimeClass();
};

}  // namespace zeb
