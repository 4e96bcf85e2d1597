#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/detail/TreeRebuild.h>
#include <ZEBPlatform/Security/KeychainRequestPrivate.h>
#include <ZEBPlatform/Security/SecItem.h>
#include <ZEBPlatform/Security/SecKeyPrivate.h>

#include <algorithm>
#include <initializer_list>

namespace zeb::detail {

namespace {

bool isCount(const Value& value) {
  return NSNumber(value).isSigned64() && value.longLongValue() > 0;
}

bool isOneOf(const Value& value, std::initializer_list<const char*> texts) {
  return value.isString() && std::ranges::any_of(texts, [&](const char* candidate) {
           return StringKey(candidate).matches(*value.storageAs<StringStorage>());
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

/// The keys that a dictionary may have beside those of the attributes, which come first in the
/// enumeration's order.
enum class Key : std::uint8_t {
  itemClass = keychainAttributeCount,
  valueData,
  returnData,
  returnAttributes,
  returnReference,
  matchLimit,
  isPermanent,
};
constexpr std::size_t keyCount = static_cast<std::size_t>(Key::isPermanent) + 1;

/// Finds the known keys by the hashes that strings keep.
class KeyTable {
 public:
  KeyTable() {
    for (std::size_t i = 0; i < keyCount; ++i) {
      std::size_t slot = keys_[i].hash() % slots_.size();
      while (slots_[slot] != keyCount) slot = next(slot);
      slots_[slot] = static_cast<std::uint8_t>(i);
    }
  }

  const StringKey& operator[](KeychainAttribute attribute) const noexcept {
    return keys_[static_cast<std::size_t>(attribute)];
  }
  /// The place of a dictionary's key in the order above, or `keyCount`.
  std::size_t find(const Value& key) const noexcept {
    if (!key.isString()) return keyCount;
    const auto& text = *key.storageAs<StringStorage>();
    for (std::size_t slot = hashOfString(text) % slots_.size();; slot = next(slot)) {
      const std::size_t place = slots_[slot];
      if (place == keyCount || keys_[place].matches(text)) return place;
    }
  }

 private:
  static constexpr std::size_t slotCount = 64;  // few of them taken, so that searches end soon
  static_assert(keyCount < slotCount / 2);

  static constexpr std::size_t next(std::size_t slot) noexcept { return (slot + 1) % slotCount; }
  static constexpr std::array<std::uint8_t, slotCount> freeSlots() {
    std::array<std::uint8_t, slotCount> slots;
    slots.fill(keyCount);
    return slots;
  }

  const std::array<StringKey, keyCount> keys_ = {
      kSecAttrAccessGroup,
      kSecAttrAccount,
      kSecAttrService,
      kSecAttrGeneric,
      kSecAttrLabel,
      kSecAttrAccessible,
      kSecAttrApplicationTag,
      kSecAttrApplicationLabel,
      kSecAttrKeyType,
      kSecAttrKeyClass,
      kSecAttrKeySizeInBits,
      kSecAttrCreationDate,
      kSecAttrModificationDate,
      kSecClass,
      kSecValueData,
      kSecReturnData,
      kSecReturnAttributes,
      kSecReturnRef,
      kSecMatchLimit,
      kSecAttrIsPermanent,
  };
  std::array<std::uint8_t, slotCount> slots_ = freeSlots();
};

const KeyTable& keyTable() {
  static const KeyTable table;
  return table;
}

bool isValid(KeychainAttribute attribute, const Value& value) {
  switch (attribute) {
    case KeychainAttribute::accessGroup:
    case KeychainAttribute::service:
    case KeychainAttribute::label:
      return value.isString();
    case KeychainAttribute::account:
      return value.isString() || value.isData();
    case KeychainAttribute::generic:
    case KeychainAttribute::applicationTag:
    case KeychainAttribute::applicationLabel:
      return value.isData();
    case KeychainAttribute::accessible:
      return isAccessible(value);
    case KeychainAttribute::keyType:
      return isKeyType(value);
    case KeychainAttribute::keyClass:
      return isKeyClass(value);
    case KeychainAttribute::keySizeInBits:
      return isCount(value);
    case KeychainAttribute::creationDate:
    case KeychainAttribute::modificationDate:
      return value.isDate();
  }
  return false;
}

/// The values under the known keys of a dictionary. Those that are taken are counted, so that keys
/// that are unknown or out of place are noticed.
class KnownKeys {
 public:
  explicit KnownKeys(const NSDictionary& dictionary) : count_(dictionary.count()) {
    for (const auto& [key, value] : dictionary) {
      const std::size_t place = keyTable().find(key);
      if (place < keyCount) values_[place] = &value;
    }
  }

  /// The value under the key, or null.
  const Value* take(std::size_t place) {
    if (values_[place]) ++takenCount_;
    return values_[place];
  }
  const Value* take(Key key) { return take(static_cast<std::size_t>(key)); }
  /// False if the value under the key is not a number.
  bool takeBoolean(Key key, bool& boolean) {
    const Value* const value = take(key);
    if (!value) return true;
    boolean = value->boolValue();
    return value->isNumber();
  }
  bool areAll() const { return takenCount_ == count_; }

 private:
  const std::size_t count_;
  std::size_t takenCount_ = 0;
  std::array<const Value*, keyCount> values_{};
};

bool readClass(KnownKeys& keys, KeychainItemClass& itemClass) {
  const Value* const value = keys.take(Key::itemClass);
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
    const Value* const value = keys.take(i);
    if (!value) continue;
    const auto attribute = static_cast<KeychainAttribute>(i);
    if (!isValid(attribute, *value)) return false;
    attributes[attribute] = *value;
  }
  return true;
}

bool readValue(KnownKeys& keys, std::optional<SecretBytes>& secret) {
  const Value* const value = keys.take(Key::valueData);
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
  if (!keys.takeBoolean(Key::returnData, request.returnsData) ||
      !keys.takeBoolean(Key::returnAttributes, request.returnsAttributes) ||
      !keys.takeBoolean(Key::returnReference, request.returnsReference)) {
    return false;
  }
  return !request.returnsReference || (request.query.itemClass == KeychainItemClass::key &&
                                       !request.returnsData && !request.returnsAttributes);
}

bool readLimit(KnownKeys& keys, KeychainDictionary purpose, KeychainRequest& request) {
  const Value* const value = keys.take(Key::matchLimit);
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

/// Takes the item's attributes.
NSMutableDictionary dictionaryOf(KeychainItem& item) {
  NSMutableDictionary result =
      NSMutableDictionary::dictionaryWithCapacity(keychainAttributeCount + 2);
  const bool isKey = item.itemClass == KeychainItemClass::key;
  result.setObject(isKey ? kSecClassKey : kSecClassGenericPassword, kSecClass);
  for (std::size_t i = 0; i < keychainAttributeCount; ++i) {
    const auto attribute = static_cast<KeychainAttribute>(i);
    Value& value = item.attributes[attribute];
    if (!value.isNil()) result.setObject(std::move(value), keyTable()[attribute].string());
  }
  return result;
}

/// Takes the item's content. `errSecItemNotFound` if it has no value and only that is asked for.
OSStatus makeResultOfOne(const KeychainRequest& request, KeychainItem& item, Value& result) {
  if (request.returnsAttributes) {
    NSMutableDictionary attributes = dictionaryOf(item);
    if (request.returnsData && item.value) {
      attributes.setObject(SecretBytes::dataByAdopting(std::move(*item.value)), kSecValueData);
    }
    result = frozen(std::move(attributes));
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
      isValid = isValid && keys.takeBoolean(Key::isPermanent, isPermanent);
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
  if (!request.returnsList) return makeResultOfOne(request, items.front(), result);
  NSMutableArray list = NSMutableArray::arrayWithCapacity(items.size());
  for (KeychainItem& item : items) {
    Value element;
    const OSStatus status = makeResultOfOne(request, item, element);
    if (status == errSecSuccess) list.addObject(element);
    if (status != errSecSuccess && status != errSecItemNotFound) return status;
  }
  if (list.empty()) return errSecItemNotFound;
  result = list.copy();
  return errSecSuccess;
}

}  // namespace zeb::detail
