#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Security/SecBase.h>
#include <ZEBPlatform/Security/SecKey.h>

namespace zeb {

// Keys of the dictionaries below, and the values of those that have fixed ones.

/// The item's class: one of the two that follow. Every dictionary that selects or adds has it.
extern const char* const kSecClass;
extern const char* const kSecClassGenericPassword;
extern const char* const kSecClassKey;

extern const char* const kSecAttrAccessGroup;       ///< text
extern const char* const kSecAttrAccount;           ///< text or data
extern const char* const kSecAttrService;           ///< text
extern const char* const kSecAttrGeneric;           ///< data
extern const char* const kSecAttrLabel;             ///< text
extern const char* const kSecAttrAccessible;        ///< one of the texts that follow
extern const char* const kSecAttrCreationDate;      ///< date, set by `SecItemAdd`
extern const char* const kSecAttrModificationDate;  ///< date, set by every change
extern const char* const kSecAttrApplicationTag;    ///< data
extern const char* const kSecAttrApplicationLabel;  ///< data: SHA-1 of the public key
extern const char* const kSecAttrKeyType;           ///< `kSecAttrKeyTypeRSA`
extern const char* const kSecAttrKeyTypeRSA;
extern const char* const kSecAttrKeyClass;  ///< `kSecAttrKeyClassPublic` or -Private
extern const char* const kSecAttrKeyClassPublic;
extern const char* const kSecAttrKeyClassPrivate;
extern const char* const kSecAttrKeySizeInBits;  ///< number
extern const char* const kSecAttrIsPermanent;    ///< boolean: whether a new key becomes an item

/// When the item may be read. Stores on this platform keep the attribute but cannot enforce it.
extern const char* const kSecAttrAccessibleAfterFirstUnlock;
extern const char* const kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly;
extern const char* const kSecAttrAccessibleWhenUnlocked;
extern const char* const kSecAttrAccessibleWhenUnlockedThisDeviceOnly;

extern const char* const kSecValueData;         ///< data: the secret
extern const char* const kSecReturnData;        ///< boolean
extern const char* const kSecReturnAttributes;  ///< boolean
extern const char* const kSecReturnRef;         ///< boolean; keys only
extern const char* const kSecMatchLimit;        ///< number, or one of the two texts that follow
extern const char* const kSecMatchLimitOne;
extern const char* const kSecMatchLimitAll;

/// In the parameters of `SecKeyGeneratePair`: dictionaries for one half of the pair.
extern const char* const kSecPrivateKeyAttrs;
extern const char* const kSecPublicKeyAttrs;

OSStatus SecItemAdd(const NSDictionary& attributes, Value* result = nullptr);
OSStatus SecItemCopyMatching(const NSDictionary& query, Value* result);
/// For queries with `kSecReturnRef`: the first key that matches.
OSStatus SecItemCopyMatching(const NSDictionary& query, SecKeyRef* result);
OSStatus SecItemUpdate(const NSDictionary& query, const NSDictionary& attributesToUpdate);
OSStatus SecItemDelete(const NSDictionary& query);

}  // namespace zeb
