#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Security/KeychainRequestPrivate.h>
#include <ZEBPlatform/Security/SecItem.h>
#include <ZEBPlatform/Security/SecKeyPrivate.h>
#include <ZEBPlatform/Security/SecKeychainPrivate.h>

#include <span>
#include <utility>
#include <vector>

namespace zeb {

namespace {

using detail::KeychainDictionary;
using detail::KeychainRequest;
using detail::KeychainSettingsPin;

/// Reads the dictionary, pins the keychain and fills in the default access group.
OSStatus begin(const NSDictionary& dictionary, KeychainDictionary purpose, KeychainRequest& request,
               KeychainSettingsPin& keychain) {
  OSStatus status = request.read(dictionary, purpose);
  if (status == errSecSuccess) status = detail::pinKeychain(keychain);
  if (status != errSecSuccess) return status;
  Value& group = request.query.attributes[KeychainAttribute::accessGroup];
  if (group.isNil()) group = detail::accessGroupOf(*keychain);
  return errSecSuccess;
}

/// What the result is made of.
KeychainStore::Values valuesFor(const KeychainRequest& request) {
  // A reference is made of the value and of attributes that say which half of a key it is.
  if (request.returnsReference) return KeychainStore::Values::include;
  if (!request.returnsData) return KeychainStore::Values::leaveOut;
  return request.returnsAttributes ? KeychainStore::Values::include : KeychainStore::Values::only;
}

OSStatus copyMatching(const KeychainRequest& request, KeychainStore& store, Value& result) {
  std::vector<KeychainItem> found;
  const OSStatus status = store.find(request.query, valuesFor(request), request.maxCount, found);
  if (status != errSecSuccess) return status;
  if (found.empty()) return errSecItemNotFound;  // of a host's store that breaks the contract
  return detail::makeResult(request, std::move(found), result);
}

}  // namespace

OSStatus SecItemAdd(const NSDictionary& attributes, Value* result) {
  KeychainRequest request;
  KeychainSettingsPin keychain;
  const OSStatus invalid = begin(attributes, KeychainDictionary::newItem, request, keychain);
  if (invalid != errSecSuccess) return invalid;
  const NSDate now = NSDate::date();
  request.query.attributes[KeychainAttribute::creationDate] = now;
  request.query.attributes[KeychainAttribute::modificationDate] = now;
  const KeychainItem item = request.takeItem();
  // The result is made first, so that nothing is added if it cannot be made.
  Value made;
  if (result && request.returnsSomething()) {
    std::vector<KeychainItem> items;
    items.push_back({item.itemClass, item.attributes, std::nullopt});
    if (item.value) items.front().value = item.value->copy();
    const OSStatus status = detail::makeResult(request, std::move(items), made);
    // Asking for the value of an item that gets none is a contradiction.
    if (status != errSecSuccess) return status == errSecItemNotFound ? errSecParam : status;
  }
  const OSStatus status = keychain->store->add(std::span(&item, 1));
  if (status == errSecSuccess && result) *result = std::move(made);
  return status;
}

OSStatus SecItemCopyMatching(const NSDictionary& query, Value* result) {
  KeychainRequest request;
  KeychainSettingsPin keychain;
  const OSStatus invalid = begin(query, KeychainDictionary::search, request, keychain);
  if (invalid != errSecSuccess) return invalid;
  Value ignored;
  return copyMatching(request, *keychain->store, result ? *result : ignored);
}

OSStatus SecItemCopyMatching(const NSDictionary& query, SecKeyRef* result) {
  KeychainRequest request;
  KeychainSettingsPin keychain;
  OSStatus status = begin(query, KeychainDictionary::search, request, keychain);
  if (status != errSecSuccess) return status;
  if (!result || !request.returnsReference || request.returnsList) return errSecParam;
  Value key;
  status = copyMatching(request, *keychain->store, key);
  if (status == errSecSuccess) *result = key.object<SecKey>();
  return status;
}

OSStatus SecItemUpdate(const NSDictionary& query, const NSDictionary& attributesToUpdate) {
  KeychainRequest request;
  KeychainRequest changes;
  if (attributesToUpdate.empty()) return errSecParam;
  OSStatus status = changes.read(attributesToUpdate, KeychainDictionary::changes);
  KeychainSettingsPin keychain;
  if (status == errSecSuccess) {
    status = begin(query, KeychainDictionary::bulkSearch, request, keychain);
  }
  if (status != errSecSuccess) return status;
  changes.query.itemClass = request.query.itemClass;
  changes.query.attributes[KeychainAttribute::creationDate] = nullptr;
  changes.query.attributes[KeychainAttribute::modificationDate] = NSDate::date();
  status = keychain->store->update(request.query, changes.takeItem());
  if (request.query.itemClass == KeychainItemClass::key) detail::forgetRecentKey();
  return status;
}

OSStatus SecItemDelete(const NSDictionary& query) {
  KeychainRequest request;
  KeychainSettingsPin keychain;
  OSStatus status = begin(query, KeychainDictionary::bulkSearch, request, keychain);
  if (status != errSecSuccess) return status;
  status = keychain->store->remove(request.query);
  if (request.query.itemClass == KeychainItemClass::key) detail::forgetRecentKey();
  return status;
}

}  // namespace zeb
