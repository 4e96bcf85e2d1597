#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Security/KeychainRequestPrivate.h>
#include <ZEBPlatform/Security/SecItem.h>
#include <ZEBPlatform/Security/SecKeyPrivate.h>

#include <algorithm>
#include <initializer_list>

namespace zeb::detail {

namespace {

bool isText(const Value& value) { return value.isString(); }
bool isData(const Value& value) { return value.isData(); }
bool isDate(const Value& value) { return value.isDate(); }
bool isTextOrData(const Value& value) { return value.isString() || value.isData(); }
bool isCount(const Value& value) {
  return NSNumber(value).isSigned64() && value.longLongValue() > 0;
}

bool isOneOf(const Value& value, std::initializer_list<const char*> texts) {
  return value.isString() &&
         std::ranges::any_of(texts, [text = NSString(value)](const char* candidate) {
           return StringKey(candidate).matches(text.text());
         });
}
bool isKeyType(const Value& value) { return isOneOf(value, {kSecAttrKeyTypeRSA}); }
bool isKeyClass(const Value& value) {
  return isOneOf(value, {kSecAttrKeyClassPublic, kSecAttrKeyClassPrivate});
}
bool isAccessible(const Value& value) {
  return isOneOf(
      value, {kSecAttrAccessibleAfterFirstUnlock, kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly,
              kSecAttrAccessibleWhenUnlocked, kSecAttrAccessibleWhenUnlockedThisDeviceOnly});
}

struct AttributeKey {
  StringKey key;
  bool (*isValid)(const Value& value);
};

/// In the enumeration's order.
const std::array<AttributeKey, keychainAttributeCount>& attributeKeys() {
  static const std::array<AttributeKey, keychainAttributeCount> keys = {{
      {kSecAttrAccessGroup, isText},
      {kSecAttrAccount, isTextOrData},
      {kSecAttrService, isText},
      {kSecAttrGeneric, isData},
      {kSecAttrLabel, isText},
      {kSecAttrAccessible, isAccessible},
      {kSecAttrApplicationTag, isData},
      {kSecAttrApplicationLabel, isData},
      {kSecAttrKeyType, isKeyType},
      {kSecAttrKeyClass, isKeyClass},
      {kSecAttrKeySizeInBits, isCount},
      {kSecAttrCreationDate, isDate},
      {kSecAttrModificationDate, isDate},
  }};
  return keys;
}

/// Takes the values of known keys out of a dictionary and counts them, so that unknown ones are
/// noticed.
class KnownKeys {
 public:
  explicit KnownKeys(const NSDictionary& dictionary) : dictionary_(dictionary) {}

  /// The value under the key, or null.
  const Value* take(const StringKey& key) {
    const Value* const value = dictionary_.find(DictionaryKey(key));
    if (value) ++count_;
    return value;
  }
  /// False if the value under the key is not a number.
  bool takeBoolean(const StringKey& key, bool& boolean) {
    const Value* const value = take(key);
    if (!value) return true;
    boolean = value->boolValue();
    return value->isNumber();
  }
  bool areAll() const { return count_ == dictionary_.count(); }

 private:
  const NSDictionary& dictionary_;
  std::size_t count_ = 0;
};

bool readClass(KnownKeys& keys, KeychainItemClass& itemClass) {
  const Value* const value = keys.take(kSecClass);
  if (!value) return false;
  if (isOneOf(*value, {kSecClassKey})) {
    itemClass = KeychainItemClass::key;
    return true;
  }
  itemClass = KeychainItemClass::genericPassword;
  return isOneOf(*value, {kSecClassGenericPassword});
}

bool readAttributes(KnownKeys& keys, KeychainAttributes& attributes) {
  for (std::size_t i = 0; i < keychainAttributeCount; ++i) {
    const AttributeKey& known = attributeKeys()[i];
    const Value* const value = keys.take(known.key);
    if (!value) continue;
    if (!known.isValid(*value)) return false;
    attributes[static_cast<KeychainAttribute>(i)] = *value;
  }
  return true;
}

bool readValue(KnownKeys& keys, std::optional<SecretBytes>& secret) {
  const Value* const value = keys.take(kSecValueData);
  if (!value) return true;
  const NSData data(*value);
  if (data.isNil()) return false;
  // Range by range, because data of several ranges would keep a joined copy that is not wiped.
  SecretBytes bytes(data.length());
  data.enumerateByteRanges([&](std::span<const std::byte> range, NSRange place) {
    std::ranges::copy(range, bytes.mutableBytes().subspan(place.location).begin());
    return true;
  });
  secret = std::move(bytes);
  return true;
}

bool readReturns(KnownKeys& keys, KeychainRequest& request) {
  if (!keys.takeBoolean(kSecReturnData, request.returnsData) ||
      !keys.takeBoolean(kSecReturnAttributes, request.returnsAttributes) ||
      !keys.takeBoolean(kSecReturnRef, request.returnsReference)) {
    return false;
  }
  return !request.returnsReference || (request.query.itemClass == KeychainItemClass::key &&
                                       !request.returnsData && !request.returnsAttributes);
}

bool readLimit(KnownKeys& keys, KeychainDictionary purpose, KeychainRequest& request) {
  const Value* const value = keys.take(kSecMatchLimit);
  const bool isAll =
      value ? isOneOf(*value, {kSecMatchLimitAll}) : purpose == KeychainDictionary::bulkSearch;
  if (isAll) {
    request.maxCount = SIZE_MAX;
    request.returnsList = true;
    return true;
  }
  if (purpose == KeychainDictionary::bulkSearch) return false;
  if (!value || isOneOf(*value, {kSecMatchLimitOne})) return true;
  request.maxCount = static_cast<std::size_t>(value->longLongValue());
  request.returnsList = true;
  return isCount(*value);
}

NSMutableDictionary dictionaryOf(const KeychainItem& item) {
  NSMutableDictionary result;
  const bool isKey = item.itemClass == KeychainItemClass::key;
  result.setObject(isKey ? kSecClassKey : kSecClassGenericPassword, kSecClass);
  for (std::size_t i = 0; i < keychainAttributeCount; ++i) {
    const Value& value = item.attributes[static_cast<KeychainAttribute>(i)];
    if (!value.isNil()) result.setObject(value, attributeKeys()[i].key.string());
  }
  return result;
}

/// `errSecItemNotFound` if the item has no value and only that is asked for.
OSStatus makeResultOfOne(const KeychainRequest& request, KeychainItem item, Value& result) {
  if (request.returnsAttributes) {
    NSMutableDictionary attributes = dictionaryOf(item);
    if (request.returnsData && item.value) {
      attributes.setObject(SecretBytes::dataByAdopting(std::move(*item.value)), kSecValueData);
    }
    result = attributes.copy();
    return errSecSuccess;
  }
  if (!item.value) return errSecItemNotFound;
  if (request.returnsData) {
    result = SecretBytes::dataByAdopting(std::move(*item.value));
    return errSecSuccess;
  }
  SecKeyRef key;
  const OSStatus status = secKeyOfItem(item, key);
  if (status == errSecSuccess) result = std::move(key);
  return status;
}

}  // namespace

OSStatus KeychainRequest::read(const NSDictionary& dictionary, KeychainDictionary purpose) {
  if (dictionary.isNil()) return errSecParam;
  KnownKeys keys(dictionary);
  // Each step takes the keys that may be in such a dictionary; the others count as unknown.
  bool isValid = readAttributes(keys, query.attributes);
  switch (purpose) {
    case KeychainDictionary::newItem:
      isValid = isValid && readClass(keys, query.itemClass) && readValue(keys, value) &&
                readReturns(keys, *this);
      break;
    case KeychainDictionary::search:
    case KeychainDictionary::bulkSearch:
      isValid = isValid && readClass(keys, query.itemClass) && readReturns(keys, *this) &&
                readLimit(keys, purpose, *this);
      break;
    case KeychainDictionary::changes:
      isValid = isValid && readValue(keys, value);
      break;
    case KeychainDictionary::newKey:
      query.itemClass = KeychainItemClass::key;
      isValid = isValid && keys.takeBoolean(kSecAttrIsPermanent, isPermanent);
      break;
  }
  return isValid && keys.areAll() ? errSecSuccess : errSecParam;
}

OSStatus makeResult(const KeychainRequest& request, std::vector<KeychainItem> items,
                    Value& result) {
  if (!request.returnsSomething()) {
    result = nullptr;
    return errSecSuccess;
  }
  if (!request.returnsList) return makeResultOfOne(request, std::move(items.front()), result);
  NSMutableArray list = NSMutableArray::arrayWithCapacity(items.size());
  for (KeychainItem& item : items) {
    Value element;
    const OSStatus status = makeResultOfOne(request, std::move(item), element);
    if (status == errSecSuccess) list.addObject(element);
    if (status != errSecSuccess && status != errSecItemNotFound) return status;
  }
  if (list.empty()) return errSecItemNotFound;
  result = list.copy();
  return errSecSuccess;
}

}  // namespace zeb::detail
