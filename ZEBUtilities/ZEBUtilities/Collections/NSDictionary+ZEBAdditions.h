#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSSet.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Geometry/CGGeometry.h>
#include <ZEBPlatform/Memory/FunctionView.h>

#include <cstdint>

/// Defensive reading of loosely typed dictionaries, such as network JSON: a missing key, a null or a
/// value of the wrong kind gives the caller's default, and nothing is raised or logged. "The object" is
/// the dictionary's value for the key.
///
/// A nil dictionary answers false, zero or nil, whatever the default: nobody was there to be asked.
/// Any thread may read an immutable dictionary; a mutable one must not change meanwhile.
namespace zeb {

/// The numeric readers take the object's reading (see `Value`) when it is a string or a number, else
/// the default. So "12abc" read as an integer gives 12, and null gives the default.
bool zeb_boolForKey(const NSDictionary& dictionary, const StringKey& key,
                    bool defaultValue = false) noexcept;
std::int32_t zeb_intForKey(const NSDictionary& dictionary, const StringKey& key,
                           std::int32_t defaultValue = 0) noexcept;
std::int64_t zeb_integerForKey(const NSDictionary& dictionary, const StringKey& key,
                               std::int64_t defaultValue = 0) noexcept;
std::int64_t zeb_longLongForKey(const NSDictionary& dictionary, const StringKey& key,
                                std::int64_t defaultValue = 0) noexcept;
float zeb_floatForKey(const NSDictionary& dictionary, const StringKey& key,
                      float defaultValue = 0) noexcept;
double zeb_doubleForKey(const NSDictionary& dictionary, const StringKey& key,
                        double defaultValue = 0) noexcept;
CGFloat zeb_cgFloatForKey(const NSDictionary& dictionary, const StringKey& key,
                          CGFloat defaultValue = 0) noexcept;

/// A boolean number made of the object's `boolValue`; nil when the object has no such reading.
NSNumber zeb_boolNumberForKey(const NSDictionary& dictionary, const StringKey& key) noexcept;

/// The object readers take the object when it is of the named kind, without converting: a number is
/// not turned into a string, nor a numeric string into a number.
NSString zeb_stringForKey(const NSDictionary& dictionary, const StringKey& key,
                          const NSString& defaultValue = nullptr);
/// As above, and the string must pass the test. A nil test passes every string.
NSString zeb_stringForKey(const NSDictionary& dictionary, const StringKey& key,
                          FunctionView<bool(const NSString& string)> passingTest,
                          const NSString& defaultValue);
NSNumber zeb_numberForKey(const NSDictionary& dictionary, const StringKey& key);
NSArray zeb_arrayForKey(const NSDictionary& dictionary, const StringKey& key);
/// The array's dictionaries in order, other elements dropped; nil when the object is no array.
NSArray zeb_arrayOfDictionariesForKey(const NSDictionary& dictionary, const StringKey& key);
NSDictionary zeb_dictionaryForKey(const NSDictionary& dictionary, const StringKey& key);
NSSet zeb_setForKey(const NSDictionary& dictionary, const StringKey& key);
NSDate zeb_dateForKey(const NSDictionary& dictionary, const StringKey& key);

/// A date from the object's 64-bit integer reading, taken as milliseconds since 1970. Deliberately:
/// despite the name it is not seconds, and a fraction in the stored number is dropped.
NSDate zeb_dateFromTimeIntervalSince1970ForKey(const NSDictionary& dictionary, const StringKey& key,
                                               const NSDate& defaultValue = nullptr);

/// The block's non-nil results for every entry, in the dictionary's order; an empty array for a nil
/// block.
NSArray zeb_mapBlock(const NSDictionary& dictionary,
                     FunctionView<Value(const Value& key, const Value& object)> block);

/// Steps down through dictionaries by all keys but the last and answers the object for the last one.
/// Nil when a step leads to no dictionary, and for a nil or empty path.
Value zeb_objectForPathElementKeys(const NSDictionary& dictionary, const NSArray& keys);

/// The object of the first key that has one; nil for a nil or empty array.
Value zeb_objectForAnyOfKeys(const NSDictionary& dictionary, const NSArray& keys);

/// The object of the first key in the dictionary's order.
Value zeb_anyObject(const NSDictionary& dictionary);

/// The receiver's entries and the other's, whose values win for equal keys. When either has no entries
/// the other one is answered itself.
NSDictionary zeb_dictionaryByAddingEntriesFromDictionary(const NSDictionary& dictionary,
                                                         const NSDictionary& other);

/// A copy with only what a property list can hold, to any depth: strings, numbers, data, dates, arrays
/// and dictionaries (see `_zeb_propertyListObjectForObject`). An entry goes with its key or its value;
/// collections that lose everything stay, empty.
NSDictionary zeb_dictionaryByRemovingInvalidPropertyListEntries(const NSDictionary& dictionary);

/// The cleaned array (mutable, with mutable nested arrays) or dictionary (immutable); data, dates,
/// numbers and strings themselves; nil for everything else. Collections that are dictionary keys are
/// cleaned too, nested in each other 64 levels deep; deeper ones are dropped.
Value _zeb_propertyListObjectForObject(const Value& object);

}  // namespace zeb
