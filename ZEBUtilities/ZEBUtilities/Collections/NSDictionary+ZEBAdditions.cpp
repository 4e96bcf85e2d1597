#include <ZEBPlatform/Foundation/detail/TreeRebuild.h>
#include <ZEBUtilities/Collections/NSDictionary+ZEBAdditions.h>
#include <ZEBUtilities/Dates/NSDate+ZEBAdditions.h>

namespace zeb {

namespace {

/// The object when it has the numeric readings, else null.
const Value* readableObject(const NSDictionary& dictionary, const StringKey& key) noexcept {
  const Value* object = dictionary.find(key);
  return object && object->respondsToNumericReadings() ? object : nullptr;
}

template <class Number>
Number reading(const NSDictionary& dictionary, const StringKey& key, Number defaultValue,
               Number (Value::*read)() const noexcept) noexcept {
  if (dictionary.isNil()) return Number();
  const Value* object = readableObject(dictionary, key);
  return object ? (object->*read)() : defaultValue;
}

/// The object as a handle of one kind, nil when it is of another.
template <class Handle>
Handle objectOfKind(const NSDictionary& dictionary, const StringKey& key) {
  const Value* object = dictionary.find(key);
  return object ? Handle(*object) : Handle();
}

bool isPropertyListLeaf(const Value& value) noexcept {
  return value.isString() || value.isNumber() || value.isData() || value.isDate();
}

/// Arrays stay mutable, dictionaries do not.
struct PropertyListRules : detail::TreeRules {
  static constexpr int deepestKeyNesting = 64;
  int keyNesting = 0;

  static bool keeps(const Value& collection, std::size_t) { return !collection.isSet(); }
  Value leaf(const Value& value) const {
    if (isPropertyListLeaf(value)) return value;
    const bool isKey = value.isArray() || value.isDictionary();
    if (!isKey || keyNesting == deepestKeyNesting) return {};
    PropertyListRules inner;
    inner.keyNesting = keyNesting + 1;
    return detail::rebuildTree(value, inner);
  }
  static Value finished(Value collection) {
    return collection.isArray() ? std::move(collection) : detail::frozen(std::move(collection));
  }
};

}  // namespace

bool zeb_boolForKey(const NSDictionary& dictionary, const StringKey& key,
                    bool defaultValue) noexcept {
  return reading(dictionary, key, defaultValue, &Value::boolValue);
}

std::int32_t zeb_intForKey(const NSDictionary& dictionary, const StringKey& key,
                           std::int32_t defaultValue) noexcept {
  return reading(dictionary, key, defaultValue, &Value::intValue);
}

std::int64_t zeb_integerForKey(const NSDictionary& dictionary, const StringKey& key,
                               std::int64_t defaultValue) noexcept {
  return reading(dictionary, key, defaultValue, &Value::integerValue);
}

std::int64_t zeb_longLongForKey(const NSDictionary& dictionary, const StringKey& key,
                                std::int64_t defaultValue) noexcept {
  return reading(dictionary, key, defaultValue, &Value::longLongValue);
}

float zeb_floatForKey(const NSDictionary& dictionary, const StringKey& key,
                      float defaultValue) noexcept {
  return reading(dictionary, key, defaultValue, &Value::floatValue);
}

double zeb_doubleForKey(const NSDictionary& dictionary, const StringKey& key,
                        double defaultValue) noexcept {
  return reading(dictionary, key, defaultValue, &Value::doubleValue);
}

CGFloat zeb_cgFloatForKey(const NSDictionary& dictionary, const StringKey& key,
                          CGFloat defaultValue) noexcept {
  return zeb_doubleForKey(dictionary, key, defaultValue);
}

NSNumber zeb_boolNumberForKey(const NSDictionary& dictionary, const StringKey& key) noexcept {
  const Value* object = readableObject(dictionary, key);
  return object ? NSNumber(object->boolValue()) : NSNumber();
}

NSString zeb_stringForKey(const NSDictionary& dictionary, const StringKey& key,
                          const NSString& defaultValue) {
  return zeb_stringForKey(dictionary, key, nullptr, defaultValue);
}

NSString zeb_stringForKey(const NSDictionary& dictionary, const StringKey& key,
                          FunctionView<bool(const NSString& string)> passingTest,
                          const NSString& defaultValue) {
  if (dictionary.isNil()) return nullptr;
  NSString string = objectOfKind<NSString>(dictionary, key);
  const bool passes = !string.isNil() && (!passingTest || passingTest(string));
  return passes ? string : defaultValue;
}

NSNumber zeb_numberForKey(const NSDictionary& dictionary, const StringKey& key) {
  return objectOfKind<NSNumber>(dictionary, key);
}

NSArray zeb_arrayForKey(const NSDictionary& dictionary, const StringKey& key) {
  return objectOfKind<NSArray>(dictionary, key);
}

NSArray zeb_arrayOfDictionariesForKey(const NSDictionary& dictionary, const StringKey& key) {
  const NSArray array = zeb_arrayForKey(dictionary, key);
  if (array.isNil()) return nullptr;
  NSMutableArray dictionaries;
  for (const Value& element : array) {
    if (element.isDictionary()) dictionaries.addObject(element);
  }
  return dictionaries.copy();
}

NSDictionary zeb_dictionaryForKey(const NSDictionary& dictionary, const StringKey& key) {
  return objectOfKind<NSDictionary>(dictionary, key);
}

NSSet zeb_setForKey(const NSDictionary& dictionary, const StringKey& key) {
  return objectOfKind<NSSet>(dictionary, key);
}

NSDate zeb_dateForKey(const NSDictionary& dictionary, const StringKey& key) {
  return objectOfKind<NSDate>(dictionary, key);
}

NSDate zeb_dateFromTimeIntervalSince1970ForKey(const NSDictionary& dictionary, const StringKey& key,
                                               const NSDate& defaultValue) {
  if (dictionary.isNil()) return nullptr;
  const Value* object = readableObject(dictionary, key);
  if (!object) return defaultValue;
  return zeb_dateFromMilliseconds(static_cast<double>(object->longLongValue()));
}

NSArray zeb_mapBlock(const NSDictionary& dictionary,
                     FunctionView<Value(const Value& key, const Value& object)> block) {
  if (dictionary.isNil()) return nullptr;
  NSMutableArray results;
  if (block) {
    const NSDictionary snapshot = dictionary.copy();  // the block may change the dictionary
    for (const auto& [key, object] : snapshot) {
      Value result = block(key, object);
      if (!result.isNil()) results.addObject(std::move(result));
    }
  }
  return results.copy();
}

Value zeb_objectForPathElementKeys(const NSDictionary& dictionary, const NSArray& keys) {
  if (keys.count() == 0) return {};
  NSDictionary reached = dictionary;
  for (const Value* key = keys.begin(); key != keys.end() - 1 && !reached.isNil(); ++key) {
    reached = NSDictionary(reached.objectForKey(*key));
  }
  return reached.objectForKey(keys.lastObject());
}

Value zeb_objectForAnyOfKeys(const NSDictionary& dictionary, const NSArray& keys) {
  for (const Value& key : keys) {
    if (const Value* object = dictionary.find(key)) return *object;
  }
  return {};
}

Value zeb_anyObject(const NSDictionary& dictionary) {
  return dictionary.count() ? dictionary.begin()->value : Value();
}

NSDictionary zeb_dictionaryByAddingEntriesFromDictionary(const NSDictionary& dictionary,
                                                         const NSDictionary& other) {
  if (dictionary.isNil() || other.count() == 0) return dictionary;
  if (dictionary.count() == 0) return other;
  NSMutableDictionary merged = dictionary.mutableCopy();
  merged.addEntriesFromDictionary(other);
  return merged.copy();
}

NSDictionary zeb_dictionaryByRemovingInvalidPropertyListEntries(const NSDictionary& dictionary) {
  return NSDictionary(_zeb_propertyListObjectForObject(dictionary));
}

Value _zeb_propertyListObjectForObject(const Value& object) {
  return detail::rebuildTree(object, PropertyListRules());
}

}  // namespace zeb
