#include <Keychain/SecretTextPrivate.h>
#include <Keychain/ZEBSecurityKey.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBPlatform/Security/MessageDigest.h>
#include <ZEBPlatform/Security/SecItem.h>
#include <ZEBPlatform/Security/SecRandom.h>
#include <ZEBPlatform/Security/SecretBytes.h>
#include <ZEBUtilities/Encodings/NSData+Base32Addition.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <utility>

namespace zeb {

namespace {

constexpr const char* keyCount = "sKeyCount";
constexpr const char* keySeed = "sKeySeed";
constexpr const char* enabledState = "loginVerificationEnabled";
constexpr const char* verificationMode = "sLoginVerificationMode";
constexpr const char* totpKey = "sTOTPKey";

bool addItem(const NSDictionary& identity, const NSData& value) {
  NSMutableDictionary item(identity);
  item.setObject(value, kSecValueData);
  return SecItemAdd(item) == errSecSuccess;
}

bool deleteItem(const NSDictionary& identity) { return SecItemDelete(identity) == errSecSuccess; }

bool replaceItem(const NSDictionary& identity, const NSData& value) {
  if (value.isNil()) return false;
  deleteItem(identity);
  return addItem(identity, value);
}

bool setItem(const NSDictionary& identity, const NSData& value) {
  if (value.isNil()) return false;
  return addItem(identity, value) ||
         SecItemUpdate(identity, {{kSecValueData, value}}) == errSecSuccess;
}

/// Nil without an item.
NSData valueOf(const NSDictionary& identity) {
  NSMutableDictionary query(identity);
  query.setObject(kSecMatchLimitOne, kSecMatchLimit);
  query.setObject(true, kSecReturnData);
  Value found;
  return SecItemCopyMatching(query, &found) == errSecSuccess ? NSData(found) : nullptr;
}

template <class Plain>
NSData dataOf(const Plain& value) {
  return SecretBytes::dataByAdopting(SecretBytes(std::as_bytes(std::span(&value, 1))));
}

/// 0 if the data is too short.
template <class Plain>
Plain plainValueIn(const NSData& data) {
  Plain value{};
  if (data.length() >= sizeof value) {
    std::ranges::copy(data.bytes().first(sizeof value),
                      std::as_writable_bytes(std::span(&value, 1)).begin());
  }
  return value;
}

NSData dataOfText(const NSString& text) {
  std::optional<SecretBytes> bytes = detail::secretUTF8(text);
  return bytes ? SecretBytes::dataByAdopting(std::move(*bytes)) : nullptr;
}

/// Nil if the data is not UTF-8.
NSString textIn(const NSData& data) {
  return data.isNil() ? nullptr : NSString::stringWithUTF8(data.view());
}

}  // namespace

NSData ZEBSecurityKey::generateSeed() {
  constexpr std::size_t seedLength = 6;
  SecretBytes seed(seedLength);
  if (SecRandomCopyBytes(kSecRandomDefault, seed.mutableBytes()) != 0) return nullptr;
  return SecretBytes::dataByAdopting(std::move(seed));
}

NSString ZEBSecurityKey::hashStringWithSeed(const NSData& seed, std::int32_t count, std::int32_t) {
  constexpr std::size_t codeLength = 12;
  constexpr std::size_t stepLength = 8;
  constexpr std::byte keptBitsOfLastByte{0xF0};
  const auto codeOf = [](const NSData& data) {
    const NSString text = base32String(data);
    return text.length() >= codeLength ? text.substringToIndex(codeLength) : nullptr;
  };
  if (seed.isNil() || count < 1) return codeOf(seed);

  SecretBytes current(stepLength);
  const std::span<std::byte> bytes = current.mutableBytes();
  MessageDigest first(DigestAlgorithm::sha256, seed.length());
  seed.enumerateByteRanges([&](std::span<const std::byte> range, NSRange) {
    first.update(range);
    return true;
  });
  first.finish(bytes);
  bytes.back() &= keptBitsOfLastByte;
  for (std::int32_t i = 1; i < count; ++i) {
    MessageDigest next(DigestAlgorithm::sha256, stepLength);
    next.update(bytes);
    next.finish(bytes);
    bytes.back() &= keptBitsOfLastByte;
  }
  return codeOf(SecretBytes::dataByAdopting(std::move(current)));
}

NSDictionary ZEBSecurityKey::_newSearchDictionary(const char* identifier, std::int64_t userID,
                                                  const NSString& serviceName) {
  const auto account = std::as_bytes(std::span(&userID, 1));
  return {{kSecClass, kSecClassGenericPassword},
          {kSecAttrGeneric, NSData::dataWithBytes(std::string_view(identifier))},
          {kSecAttrAccount, NSData::dataWithBytes(account)},
          {kSecAttrService, NSString::stringWithFormat("%@.%@", serviceName, identifier)}};
}

bool ZEBSecurityKey::addsKeyCount(std::int32_t count, std::int64_t userID,
                                  const NSString& serviceName) {
  return replaceItem(_newSearchDictionary(keyCount, userID, serviceName), dataOf(count));
}
std::int32_t ZEBSecurityKey::getsKeyCountForUser(std::int64_t userID, const NSString& serviceName) {
  return plainValueIn<std::int32_t>(valueOf(_newSearchDictionary(keyCount, userID, serviceName)));
}
bool ZEBSecurityKey::setsKeyCount(std::int32_t count, std::int64_t userID,
                                  const NSString& serviceName) {
  return setItem(_newSearchDictionary(keyCount, userID, serviceName), dataOf(count));
}
bool ZEBSecurityKey::delsKeyCountForUser(std::int64_t userID, const NSString& serviceName) {
  return deleteItem(_newSearchDictionary(keyCount, userID, serviceName));
}

bool ZEBSecurityKey::addsKeySeed(const NSData& seed, std::int64_t userID,
                                 const NSString& serviceName) {
  return replaceItem(_newSearchDictionary(keySeed, userID, serviceName), seed);
}
NSData ZEBSecurityKey::getsKeySeed(std::int64_t userID, const NSString& serviceName) {
  return valueOf(_newSearchDictionary(keySeed, userID, serviceName));
}
bool ZEBSecurityKey::setsKeySeed(const NSData& seed, std::int64_t userID,
                                 const NSString& serviceName) {
  return setItem(_newSearchDictionary(keySeed, userID, serviceName), seed);
}
bool ZEBSecurityKey::delsKeySeedForUser(std::int64_t userID, const NSString& serviceName) {
  return deleteItem(_newSearchDictionary(keySeed, userID, serviceName));
}

bool ZEBSecurityKey::addloginVerificationEnabled(bool enabled, std::int64_t userID,
                                                 const NSString& serviceName) {
  return replaceItem(_newSearchDictionary(enabledState, userID, serviceName),
                     dataOf(static_cast<std::uint8_t>(enabled)));
}
bool ZEBSecurityKey::getsloginVerificationEnabled(std::int64_t userID,
                                                  const NSString& serviceName) {
  return plainValueIn<std::uint8_t>(
             valueOf(_newSearchDictionary(enabledState, userID, serviceName))) != 0;
}
bool ZEBSecurityKey::setsloginVerificationEnabled(bool enabled, std::int64_t userID,
                                                  const NSString& serviceName) {
  return setItem(_newSearchDictionary(enabledState, userID, serviceName),
                 dataOf(static_cast<std::uint8_t>(enabled)));
}
bool ZEBSecurityKey::delloginVericiationEnabledForUser(std::int64_t userID,
                                                       const NSString& serviceName) {
  return deleteItem(_newSearchDictionary(enabledState, userID, serviceName));
}

bool ZEBSecurityKey::addsLoginVerificationMode(std::int32_t mode, std::int64_t userID,
                                               const NSString& serviceName) {
  return replaceItem(_newSearchDictionary(verificationMode, userID, serviceName), dataOf(mode));
}
std::int32_t ZEBSecurityKey::getsLoginVerificationMode(std::int64_t userID,
                                                       const NSString& serviceName) {
  return plainValueIn<std::int32_t>(
      valueOf(_newSearchDictionary(verificationMode, userID, serviceName)));
}
bool ZEBSecurityKey::setsLoginVerificationMode(std::int32_t mode, std::int64_t userID,
                                               const NSString& serviceName) {
  return setItem(_newSearchDictionary(verificationMode, userID, serviceName), dataOf(mode));
}
bool ZEBSecurityKey::delsLoginVerificationModeForUser(std::int64_t userID,
                                                      const NSString& serviceName) {
  return deleteItem(_newSearchDictionary(verificationMode, userID, serviceName));
}

bool ZEBSecurityKey::addsTOTPKey(const NSString& key, std::int64_t userID,
                                 const NSString& serviceName) {
  return replaceItem(_newSearchDictionary(totpKey, userID, serviceName), dataOfText(key));
}
NSString ZEBSecurityKey::getsTOTPKeyForUser(std::int64_t userID, const NSString& serviceName) {
  return textIn(valueOf(_newSearchDictionary(totpKey, userID, serviceName)));
}
bool ZEBSecurityKey::setsTOTPKey(const NSString& key, std::int64_t userID,
                                 const NSString& serviceName) {
  return setItem(_newSearchDictionary(totpKey, userID, serviceName), dataOfText(key));
}
bool ZEBSecurityKey::delsTOTPKeyForUser(std::int64_t userID, const NSString& serviceName) {
  return deleteItem(_newSearchDictionary(totpKey, userID, serviceName));
}

Class* ZEBSecurityKey::runtimeClass() {
  using Self = ZEBSecurityKey;
  static Class* const cls = registerClass(
      "ZEBSecurityKey",
      {
          classMethod("generateSeed", &Self::generateSeed),
          classMethod("hashStringWithSeed:count:length:", &Self::hashStringWithSeed),
          classMethod("addsKeyCount:forUser:withServiceName:", &Self::addsKeyCount),
          classMethod("getsKeyCountForUser:withServiceName:", &Self::getsKeyCountForUser),
          classMethod("setsKeyCount:forUser:withServiceName:", &Self::setsKeyCount),
          classMethod("delsKeyCountForUser:withServiceName:", &Self::delsKeyCountForUser),
          classMethod("addsKeySeed:forUser:withServiceName:", &Self::addsKeySeed),
          classMethod("getsKeySeed:withServiceName:", &Self::getsKeySeed),
          classMethod("setsKeySeed:forUser:withServiceName:", &Self::setsKeySeed),
          classMethod("delsKeySeedForUser:withServiceName:", &Self::delsKeySeedForUser),
          classMethod("addloginVerificationEnabled:forUser:withServiceName:",
                      &Self::addloginVerificationEnabled),
          classMethod("getsloginVerificationEnabled:withServiceName:",
                      &Self::getsloginVerificationEnabled),
          classMethod("setsloginVerificationEnabled:forUser:withServiceName:",
                      &Self::setsloginVerificationEnabled),
          classMethod("delloginVericiationEnabledForUser:withServiceName:",
                      &Self::delloginVericiationEnabledForUser),
          classMethod("addsLoginVerificationMode:forUser:withServiceName:",
                      &Self::addsLoginVerificationMode),
          classMethod("getsLoginVerificationMode:withServiceName:",
                      &Self::getsLoginVerificationMode),
          classMethod("setsLoginVerificationMode:forUser:withServiceName:",
                      &Self::setsLoginVerificationMode),
          classMethod("delsLoginVerificationModeForUser:withServiceName:",
                      &Self::delsLoginVerificationModeForUser),
          classMethod("addsTOTPKey:forUser:withServiceName:", &Self::addsTOTPKey),
          classMethod("getsTOTPKeyForUser:withServiceName:", &Self::getsTOTPKeyForUser),
          classMethod("setsTOTPKey:forUser:withServiceName:", &Self::setsTOTPKey),
          classMethod("delsTOTPKeyForUser:withServiceName:", &Self::delsTOTPKeyForUser),
      });
  return cls;
}

}  // namespace zeb
