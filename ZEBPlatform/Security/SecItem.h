#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Security/SecBase.h>
#include <ZEBPlatform/Security/SecKey.h>

namespace zeb {

// Passwords and keys kept safely, as items of the keychain that `SecKeychainSetStore` chose (see
// SecKeychain.h). An item has a class, attributes, which are not secret, and a value, which is.
//
// All functions may be called from any thread and by several processes at a time, and each takes
// effect completely or not at all. They return `errSecSuccess` or why they failed; results are
// untouched by failures. A nil dictionary, a key that is unknown or out of place, a value of the
// wrong kind and a missing class are `errSecParam`: unknown keys are refused because a misspelt one
// would select more items than the caller meant. Dictionaries belong to the caller and are not
// changed.
//
// A dictionary without kSecAttrAccessGroup means the default access group.

// Keys of the dictionaries, and the values of those that have fixed ones.

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

/// Adds an item: attributes, the value under kSecValueData, and what to return of the new item (see
/// `SecItemCopyMatching`) if `result` is not null. An item needs no value. The dates are set here;
/// dates in the dictionary are ignored. `errSecDuplicateItem` if there is an item of this identity:
/// for passwords access group, service and account, for keys access group, key class, key type and
/// application tag.
OSStatus SecItemAdd(const NSDictionary& attributes, Value* result = nullptr);

/// Finds the items whose attributes equal all those in the query, oldest first.
///
/// `result` is set to what the query asks for, and to nil if it asks for nothing, as a question
/// whether there is such an item; it may be null then. One item is returned
///   - as data for kSecReturnData: the value, in memory that is overwritten when the data is freed,
///   - as a dictionary for kSecReturnAttributes: the class, the attributes and, if kSecReturnData
///     is also true, the value under kSecValueData,
///   - as a `SecKey` for kSecReturnRef, which goes with neither of the others; the item has
///     kSecAttrKeyClass, and its value is that half of a key as PKCS #1 in DER.
/// Without kSecMatchLimit, or with kSecMatchLimitOne, `result` is the first item; with a number
/// it is an array of at most that number of items, with kSecMatchLimitAll an array of all.
///
/// `errSecItemNotFound` if no item matches. An item that was stored without a value is not found by
/// a query that asks for data or reference alone, although its attributes are; it still counts for
/// the limit. `errSecDecode` if a value is damaged, or is no key although a reference is asked for.
OSStatus SecItemCopyMatching(const NSDictionary& query, Value* result);
/// For queries with kSecReturnRef and without a list: the first key that matches.
OSStatus SecItemCopyMatching(const NSDictionary& query, SecKeyRef* result);

/// Gives all items that match the query the attributes and the value in `attributesToUpdate`, which
/// must not be empty and has no class. What it does not name stays. Sets the modification date.
/// What the query asks to return is ignored; a limit other than kSecMatchLimitAll is `errSecParam`.
/// `errSecItemNotFound` if no item matches, `errSecDuplicateItem` if two would be equal.
OSStatus SecItemUpdate(const NSDictionary& query, const NSDictionary& attributesToUpdate);

/// Removes all items that match. The rest is as for `SecItemUpdate`.
OSStatus SecItemDelete(const NSDictionary& query);

}  // namespace zeb
