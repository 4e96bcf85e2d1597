#include <ZEBPlatform/Security/SecItem.h>

namespace zeb {

const char* const kSecClass = "class";
const char* const kSecClassGenericPassword = "genericPassword";
const char* const kSecClassKey = "key";

const char* const kSecAttrAccessGroup = "accessGroup";
const char* const kSecAttrAccount = "account";
const char* const kSecAttrService = "service";
const char* const kSecAttrGeneric = "generic";
const char* const kSecAttrLabel = "label";
const char* const kSecAttrAccessible = "accessible";
const char* const kSecAttrCreationDate = "creationDate";
const char* const kSecAttrModificationDate = "modificationDate";
const char* const kSecAttrApplicationTag = "applicationTag";
const char* const kSecAttrApplicationLabel = "applicationLabel";
const char* const kSecAttrKeyType = "keyType";
const char* const kSecAttrKeyTypeRSA = "RSA";
const char* const kSecAttrKeyClass = "keyClass";
const char* const kSecAttrKeyClassPublic = "public";
const char* const kSecAttrKeyClassPrivate = "private";
const char* const kSecAttrKeySizeInBits = "keySizeInBits";
const char* const kSecAttrIsPermanent = "isPermanent";

const char* const kSecAttrAccessibleAfterFirstUnlock = "afterFirstUnlock";
const char* const kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly =
    "afterFirstUnlockThisDeviceOnly";
const char* const kSecAttrAccessibleWhenUnlocked = "whenUnlocked";
const char* const kSecAttrAccessibleWhenUnlockedThisDeviceOnly = "whenUnlockedThisDeviceOnly";

const char* const kSecValueData = "valueData";
const char* const kSecReturnData = "returnData";
const char* const kSecReturnAttributes = "returnAttributes";
const char* const kSecReturnRef = "returnRef";
const char* const kSecMatchLimit = "matchLimit";
const char* const kSecMatchLimitOne = "matchLimitOne";
const char* const kSecMatchLimitAll = "matchLimitAll";

const char* const kSecPrivateKeyAttrs = "privateKeyAttributes";
const char* const kSecPublicKeyAttrs = "publicKeyAttributes";

}  // namespace zeb
