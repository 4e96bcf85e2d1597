#include <Keychain/ZEBRSAOperations.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBPlatform/Security/SecItem.h>
#include <ZEBPlatform/Security/SecKey.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>
#include <ZEBUtilities/Encodings/NSData+CommonDigest.h>

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

namespace {

constexpr std::int64_t noUser = 0;
constexpr int keySizeInBits = 2048;

NSString tagOf(const char* half, std::int64_t userID) {
  return NSString::stringWithFormat("%@_%lld", NSString(ZEBUtilitiesIdentifierPrefix) + half,
                                    userID);
}

NSData tagData(const NSString& tag) { return NSData::dataWithBytes(tag.utf8()); }

NSDictionary queryOf(const NSString& tag, const char* wantedResult) {
  return {{kSecClass, kSecClassKey},
          {kSecAttrApplicationTag, tagData(tag)},
          {kSecAttrKeyType, kSecAttrKeyTypeRSA},
          {wantedResult, true}};
}

NSDictionary permanentKey(const NSString& tag) {
  return {{kSecAttrIsPermanent, true}, {kSecAttrApplicationTag, tagData(tag)}};
}

/// Deletes the half with the tag if the other half is missing. Pairs are added whole, so that no
/// half looks alone while another thread adds its pair. The digest in the label keeps the half of a
/// pair that another thread or process has made meanwhile.
void deleteIfAlone(const NSString& tag, const NSString& otherTag) {
  Value attributes;
  Value other;
  if (SecItemCopyMatching(queryOf(tag, kSecReturnAttributes), &attributes) != errSecSuccess ||
      SecItemCopyMatching(queryOf(otherTag, kSecReturnAttributes), &other) != errSecItemNotFound) {
    return;
  }
  NSMutableDictionary half(queryOf(tag, kSecReturnAttributes));
  const Value label = NSDictionary(attributes)[kSecAttrApplicationLabel];
  if (!label.isNil()) half.setObject(label, kSecAttrApplicationLabel);
  SecItemDelete(half);
}

/// How many bytes follow the first one of a length above 127: exact below 512.
std::size_t lengthBytes(std::size_t length) { return (length >> 8) + 1; }

/// How many bytes a length takes.
std::size_t lengthSize(std::size_t length) { return length < 128 ? 1 : 1 + lengthBytes(length); }

void appendLength(std::string& output, std::size_t length) {
  if (length < 128) {
    output += static_cast<char>(length);
    return;
  }
  output += static_cast<char>(0x81 + (length >> 8));
  for (std::size_t place = lengthBytes(length); place > 0; --place) {
    const std::size_t shift = 8 * (place - 1);
    output += place > sizeof length ? '\0' : static_cast<char>(length >> shift);
  }
}

/// A PKCS #1 public key as SubjectPublicKeyInfo.
std::string publicKeyInfo(std::string_view key) {
  using namespace std::string_view_literals;
  // rsaEncryption, with NULL as its parameters.
  constexpr auto algorithm = "\x30\x0D\x06\x09\x2A\x86\x48\x86\xF7\x0D\x01\x01\x01\x05\x00"sv;
  const std::size_t bitStringLength = key.size() + 1;  // with the number of unused bits
  std::string info = "\x30";
  appendLength(info, algorithm.size() + 1 + lengthSize(bitStringLength) + bitStringLength);
  info += algorithm;
  info += '\x03';
  appendLength(info, bitStringLength);
  info += '\0';
  info += key;
  return info;
}

NSString base64Lines(std::string_view bytes) {
  constexpr std::size_t lineLength = 64;
  const NSString text = NSData::dataWithBytes(bytes).base64EncodedString();
  std::string lines;
  for (std::string_view rest = text.asciiView(); !rest.empty();
       rest.remove_prefix(std::min(lineLength, rest.size()))) {
    if (!lines.empty()) lines += "\r\n";
    lines += rest.substr(0, lineLength);
  }
  return lines;
}

}  // namespace

NSString ZEBRSAOperations::publicKeyTagForUserid(std::int64_t userID) {
  return tagOf(".2fa.publickey", userID);
}

NSString ZEBRSAOperations::privateKeyTagForUserid(std::int64_t userID) {
  return tagOf(".2fa.privatekey", userID);
}

NSDictionary ZEBRSAOperations::publicKeyQueryDictionaryForUserid(std::int64_t userID) {
  return queryOf(publicKeyTagForUserid(userID), kSecReturnData);
}

NSDictionary ZEBRSAOperations::privateKeyQueryDictionaryForUserid(std::int64_t userID) {
  return queryOf(privateKeyTagForUserid(userID), kSecReturnRef);
}

void ZEBRSAOperations::generateKeyPairForUser(std::int64_t userID) {
  if (userID == noUser) return;
  deleteIfAlone(privateKeyTagForUserid(userID), publicKeyTagForUserid(userID));
  deleteIfAlone(publicKeyTagForUserid(userID), privateKeyTagForUserid(userID));
  SecKeyGeneratePair({{kSecAttrKeyType, kSecAttrKeyTypeRSA},
                      {kSecAttrKeySizeInBits, keySizeInBits},
                      {kSecPrivateKeyAttrs, permanentKey(privateKeyTagForUserid(userID))},
                      {kSecPublicKeyAttrs, permanentKey(publicKeyTagForUserid(userID))}},
                     nullptr, nullptr);
}

void ZEBRSAOperations::deleteKeyPairForUser(std::int64_t userID) {
  SecItemDelete(publicKeyQueryDictionaryForUserid(userID));
  SecItemDelete(privateKeyQueryDictionaryForUserid(userID));
}

NSData ZEBRSAOperations::signData(const NSData& data, std::int64_t userID) {
  if (data.isNil() || userID == noUser) return nullptr;
  SecKeyRef key;
  if (SecItemCopyMatching(privateKeyQueryDictionaryForUserid(userID), &key) != errSecSuccess) {
    return nullptr;
  }
  std::vector<std::byte> signature(SecKeyGetBlockSize(key));
  std::size_t length = 0;
  if (SecKeyRawSign(key, kSecPaddingPKCS1SHA1, zeb_SHA1Hash(data).bytes(), signature, &length) !=
      errSecSuccess) {
    return nullptr;
  }
  return NSData::dataWithBytes(std::span(signature).first(length));
}

NSString ZEBRSAOperations::base64PublicKeyForUser(std::int64_t userID) {
  Value key;
  if (userID == noUser ||
      SecItemCopyMatching(publicKeyQueryDictionaryForUserid(userID), &key) != errSecSuccess) {
    return nullptr;
  }
  return base64Lines(publicKeyInfo(NSData(key).view()));
}

Class* ZEBRSAOperations::runtimeClass() {
  using Self = ZEBRSAOperations;
  static Class* const cls = registerClass(
      "ZEBRSAOperations", {
                              classMethod("publicKeyTagForUserid:", &Self::publicKeyTagForUserid),
                              classMethod("privateKeyTagForUserid:", &Self::privateKeyTagForUserid),
                              classMethod("publicKeyQueryDictionaryForUserid:",
                                          &Self::publicKeyQueryDictionaryForUserid),
                              classMethod("privateKeyQueryDictionaryForUserid:",
                                          &Self::privateKeyQueryDictionaryForUserid),
                              classMethod("generateKeyPairForUser:", &Self::generateKeyPairForUser),
                              classMethod("deleteKeyPairForUser:", &Self::deleteKeyPairForUser),
                              classMethod("signData:forUser:", &Self::signData),
                              classMethod("base64PublicKeyForUser:", &Self::base64PublicKeyForUser),
                          });
  return cls;
}

}  // namespace zeb
