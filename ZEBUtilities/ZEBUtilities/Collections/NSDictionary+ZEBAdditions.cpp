#include <ZEBPlatform/Foundation/detail/TreeRebuild.h>
#include <ZEBUtilities/Collections/NSDictionary+ZEBAdditions.h>
#include <ZEBUtilities/Dates/NSDate+ZEBAdditions.h>

namespace zeb {

namespace {

/// The object that the path leads to, borrowed from its dictionary; null if there is none.
const Value* find(const NSDictionary& dictionary, const PathElementKeys& keys) {
  if (keys.count() == 0) return nullptr;
  const Value* object = dictionary.find(keys[0]);
  for (std::size_t index = 1; object && index < keys.count(); ++index) {
    object = NSDictionary(*object).find(keys[index]);
  }
  return object;
}
const Value* find(const NSDictionary& dictionary, const DictionaryKey& key) {
  return dictionary.find(key);
}

/// The object's reading when it has the numeric readings, else the default.
template <class Number>
Number reading(const Value* object, Number defaultValue, Number (Value::*read)() const noexcept) {
  return object && object->respondsToNumericReadings() ? (object->*read)() : defaultValue;
}

/// The object as a handle of one kind, the default when it is of another.
template <class Handle>
Handle objectOfKind(const Value* object, const Handle& defaultValue = nullptr) {
  Handle handle = object ? Handle(*object) : Handle();
  if (handle.isNil()) return defaultValue;
  return handle;
}

bool isPropertyListLeaf(const Value& value) noexcept {
  return value.isString() || value.isNumber() || value.isData() || value.isDate();
}

/// Arrays stay mutable, dictionaries do not.
struct PropertyListRules : detail::TreeRules {
  static constexpr int maxKeyNesting = 64;
  int keyNesting = 0;

  static bool keeps(const Value& collection, std::size_t) {
    return collection.isArray() || collection.isDictionary();
  }
  Value leaf(const Value& value) const {
    if (isPropertyListLeaf(value)) return value;
    const bool isKey = value.isArray() || value.isDictionary();
    if (!isKey || keyNesting == maxKeyNesting) return {};
    PropertyListRules inner;
    inner.keyNesting = keyNesting + 1;
    return detail::rebuildTree(value, inner);
  }
  static Value finished(Value collection) {
    return collection.isArray() ? std::move(collection) : detail::frozen(std::move(collection));
  }
};

}  // namespace

bool zeb_boolForKey(const NSDictionary& dictionary, const DictionaryKey& key, bool defaultValue) {
  return reading(find(dictionary, key), defaultValue, &Value::boolValue);
}

bool zeb_boolForPathElementKeys(const NSDictionary& dictionary, const PathElementKeys& keys,
                                bool defaultValue) {
  return reading(find(dictionary, keys), defaultValue, &Value::boolValue);
}

std::int32_t zeb_intForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                           std::int32_t defaultValue) {
  return reading(find(dictionary, key), defaultValue, &Value::intValue);
}

std::int32_t zeb_intForPathElementKeys(const NSDictionary& dictionary, const PathElementKeys& keys,
                                       std::int32_t defaultValue) {
  return reading(find(dictionary, keys), defaultValue, &Value::intValue);
}

std::int64_t zeb_integerForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                               std::int64_t defaultValue) {
  return reading(find(dictionary, key), defaultValue, &Value::integerValue);
}

std::int64_t zeb_integerForPathElementKeys(const NSDictionary& dictionary,
                                           const PathElementKeys& keys, std::int64_t defaultValue) {
  return reading(find(dictionary, keys), defaultValue, &Value::integerValue);
}

std::int64_t zeb_longLongForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                                std::int64_t defaultValue) {
  return reading(find(dictionary, key), defaultValue, &Value::longLongValue);
}

float zeb_floatForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                      float defaultValue) {
  return reading(find(dictionary, key), defaultValue, &Value::floatValue);
}

double zeb_doubleForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                        double defaultValue) {
  return reading(find(dictionary, key), defaultValue, &Value::doubleValue);
}

double zeb_doubleForPathElementKeys(const NSDictionary& dictionary, const PathElementKeys& keys,
                                    double defaultValue) {
  return reading(find(dictionary, keys), defaultValue, &Value::doubleValue);
}

CGFloat zeb_cgFloatForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                          CGFloat defaultValue) {
  return zeb_doubleForKey(dictionary, key, defaultValue);
}

NSNumber zeb_boolNumberForKey(const NSDictionary& dictionary, const DictionaryKey& key) {
  const Value* object = find(dictionary, key);
  const bool isReadable = object && object->respondsToNumericReadings();
  return isReadable ? NSNumber(object->boolValue()) : NSNumber();
}

NSString zeb_stringForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                          const NSString& defaultValue) {
  return objectOfKind(find(dictionary, key), defaultValue);
}

NSString zeb_stringForPathElementKeys(const NSDictionary& dictionary, const PathElementKeys& keys,
                                      const NSString& defaultValue) {
  return objectOfKind(find(dictionary, keys), defaultValue);
}

NSString zeb_stringForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                          FunctionView<bool(const NSString& string)> passingTest,
                          const NSString& defaultValue) {
  NSString string = zeb_stringForKey(dictionary, key);
  const bool passes = !string.isNil() && (!passingTest || passingTest(string));
  return passes ? string : defaultValue;
}

NSNumber zeb_numberForKey(const NSDictionary& dictionary, const DictionaryKey& key) {
  return objectOfKind<NSNumber>(find(dictionary, key));
}

NSArray zeb_arrayForKey(const NSDictionary& dictionary, const DictionaryKey& key) {
  return objectOfKind<NSArray>(find(dictionary, key));
}

NSArray zeb_arrayForPathElementKeys(const NSDictionary& dictionary, const PathElementKeys& keys) {
  return objectOfKind<NSArray>(find(dictionary, keys));
}

NSArray zeb_arrayOfDictionariesForKey(const NSDictionary& dictionary, const DictionaryKey& key) {
  const NSArray array = zeb_arrayForKey(dictionary, key);
  if (array.isNil()) return nullptr;
  NSMutableArray dictionaries;
  for (const Value& element : array) {
    if (element.isDictionary()) dictionaries.addObject(element);
  }
  return dictionaries.copy();
}

NSDictionary zeb_dictionaryForKey(const NSDictionary& dictionary, const DictionaryKey& key) {
  return objectOfKind<NSDictionary>(find(dictionary, key));
}

NSDictionary zeb_dictionaryForPathElementKeys(const NSDictionary& dictionary,
                                              const PathElementKeys& keys) {
  return objectOfKind<NSDictionary>(find(dictionary, keys));
}

NSSet zeb_setForKey(const NSDictionary& dictionary, const DictionaryKey& key) {
  return objectOfKind<NSSet>(find(dictionary, key));
}

NSDate zeb_dateForKey(const NSDictionary& dictionary, const DictionaryKey& key) {
  return objectOfKind<NSDate>(find(dictionary, key));
}

NSDate zeb_dateFromTimeIntervalSince1970ForKey(const NSDictionary& dictionary,
                                               const DictionaryKey& key,
                                               const NSDate& defaultValue) {
  const Value* object = find(dictionary, key);
  if (!object || !object->respondsToNumericReadings()) return defaultValue;
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

Value zeb_objectForPathElementKeys(const NSDictionary& dictionary, const PathElementKeys& keys) {
  const Value* object = find(dictionary, keys);
  return object ? *object : Value();
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
