#pragma once

#include <ZEBPlatform/Foundation/DictionaryKey.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSSet.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Geometry/CGGeometry.h>
#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBUtilities/Collections/PathElementKeys.h>

#include <cstdint>

/// Defensive reading of loosely typed dictionaries, such as network JSON: a nil dictionary, a
/// missing key, a null and a value of the wrong kind give the caller's default, and nothing is
/// raised or logged. "The object" is the dictionary's value for the key.
///
/// The caller's default is false, zero or nil unless given, so calls can be nested:
/// `zeb_stringForKey(zeb_dictionaryForKey(user, "settings"), "theme", "dark")` gives "dark" if
/// either key is missing. Any thread may read an immutable dictionary; a mutable one must not
/// change meanwhile. Texts as keys need no memory; a key of another kind can throw std::bad_alloc
/// (see `Value::hash`).
namespace zeb {

/// The numeric readers take the object's reading (see `Value`) when it is a string or a number,
/// else the default. So "12abc" read as an integer gives 12, and null gives the default.
bool zeb_boolForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                    bool defaultValue = false);
std::int32_t zeb_intForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                           std::int32_t defaultValue = 0);
std::int64_t zeb_integerForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                               std::int64_t defaultValue = 0);
std::int64_t zeb_longLongForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                                std::int64_t defaultValue = 0);
float zeb_floatForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                      float defaultValue = 0);
double zeb_doubleForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                        double defaultValue = 0);
CGFloat zeb_cgFloatForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                          CGFloat defaultValue = 0);

/// A boolean number made of the object's `boolValue`; nil when the object has no such reading.
NSNumber zeb_boolNumberForKey(const NSDictionary& dictionary, const DictionaryKey& key);

/// The object readers take the object when it is of the named kind, without converting: a number is
/// not turned into a string, nor a numeric string into a number.
NSString zeb_stringForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                          const NSString& defaultValue = nullptr);
/// As above, and the string must pass the test. A nil test passes every string.
NSString zeb_stringForKey(const NSDictionary& dictionary, const DictionaryKey& key,
                          FunctionView<bool(const NSString& string)> passingTest,
                          const NSString& defaultValue);
NSNumber zeb_numberForKey(const NSDictionary& dictionary, const DictionaryKey& key);
NSArray zeb_arrayForKey(const NSDictionary& dictionary, const DictionaryKey& key);
/// The array's dictionaries in order, other elements dropped; nil when the object is not an array.
NSArray zeb_arrayOfDictionariesForKey(const NSDictionary& dictionary, const DictionaryKey& key);
NSDictionary zeb_dictionaryForKey(const NSDictionary& dictionary, const DictionaryKey& key);
NSSet zeb_setForKey(const NSDictionary& dictionary, const DictionaryKey& key);
NSDate zeb_dateForKey(const NSDictionary& dictionary, const DictionaryKey& key);

/// A date from the object's 64-bit integer reading, taken as milliseconds since 1970. Deliberately:
/// despite the name it is not seconds, and a fraction in the stored number is dropped.
NSDate zeb_dateFromTimeIntervalSince1970ForKey(const NSDictionary& dictionary,
                                               const DictionaryKey& key,
                                               const NSDate& defaultValue = nullptr);

/// Steps down through dictionaries by all keys but the last and answers the object for the last
/// one. Nil when a step leads to no dictionary, and for an empty path.
Value zeb_objectForPathElementKeys(const NSDictionary& dictionary, const PathElementKeys& keys);

/// The path readers read the object that `zeb_objectForPathElementKeys` answers as the readers of
/// the same kind above read theirs: `zeb_stringForPathElementKeys(user, {"settings", "theme"},
/// "dark")`.
bool zeb_boolForPathElementKeys(const NSDictionary& dictionary, const PathElementKeys& keys,
                                bool defaultValue = false);
std::int32_t zeb_intForPathElementKeys(const NSDictionary& dictionary, const PathElementKeys& keys,
                                       std::int32_t defaultValue = 0);
std::int64_t zeb_integerForPathElementKeys(const NSDictionary& dictionary,
                                           const PathElementKeys& keys,
                                           std::int64_t defaultValue = 0);
double zeb_doubleForPathElementKeys(const NSDictionary& dictionary, const PathElementKeys& keys,
                                    double defaultValue = 0);
NSString zeb_stringForPathElementKeys(const NSDictionary& dictionary, const PathElementKeys& keys,
                                      const NSString& defaultValue = nullptr);
NSArray zeb_arrayForPathElementKeys(const NSDictionary& dictionary, const PathElementKeys& keys);
NSDictionary zeb_dictionaryForPathElementKeys(const NSDictionary& dictionary,
                                              const PathElementKeys& keys);

/// The block's non-nil results for every entry, in the dictionary's order; an empty array for a nil
/// block.
NSArray zeb_mapBlock(const NSDictionary& dictionary,
                     FunctionView<Value(const Value& key, const Value& object)> block);

/// The object of the first key that has one; nil for a nil or empty array.
Value zeb_objectForAnyOfKeys(const NSDictionary& dictionary, const NSArray& keys);

/// The object of the first key in the dictionary's order.
Value zeb_anyObject(const NSDictionary& dictionary);

/// The receiver's entries and the other's, whose values win for equal keys. When one of the two has
/// no entries, the other one itself is answered.
[[nodiscard]] NSDictionary zeb_dictionaryByAddingEntriesFromDictionary(
    const NSDictionary& dictionary, const NSDictionary& other);

/// A copy with only what a property list can hold, to any depth: strings, numbers, data, dates,
/// arrays and dictionaries (see `_zeb_propertyListObjectForObject`). An entry whose key or value
/// cannot stay is dropped; a collection that loses all its content stays, empty.
[[nodiscard]] NSDictionary zeb_dictionaryByRemovingInvalidPropertyListEntries(
    const NSDictionary& dictionary);

/// The cleaned array (mutable, with mutable nested arrays) or dictionary (immutable); data, dates,
/// numbers and strings themselves; nil for everything else. Collections that are dictionary keys
/// are cleaned too, nested in each other 64 levels deep; deeper ones are dropped.
[[nodiscard]] Value _zeb_propertyListObjectForObject(const Value& object);

}  // namespace zeb
