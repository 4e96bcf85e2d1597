#pragma once

#include <ZEBPlatform/Foundation/StringKey.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <concepts>

/// Properties by name: registered ones, methods without arguments, and the entries of dictionaries.
namespace zeb {

/// The name of the exception that an unknown key raises: "NSUnknownKeyException".
extern const char* const NSUndefinedKeyException;

/// The value that the receiver has under the key: a dictionary's entry (nil when there is none),
/// else what the property or the method of that name answers. Nil for a nil receiver; throws
/// NSException (NSUndefinedKeyException) when there is neither.
Value valueForKey(const Value& receiver, const StringKey& key);

/// Sets a mutable dictionary's entry (nil removes it), else calls the property's setter, or a
/// method `setKey:`; observers are told. Nothing for a nil receiver; throws NSException
/// (NSUndefinedKeyException) when there is no such setter, and NSInvalidArgumentException when the
/// setter takes another kind.
void setValueForKey(const Value& receiver, const Value& value, const StringKey& key);
namespace detail {
void setValueForKeyOfObject(Ref<NSObject> receiver, const Value& value, const StringKey& key);
}
/// The object is kept alive until the call returns.
template <std::derived_from<NSObject> T>
void setValueForKey(const Ref<T>& receiver, const Value& value, const StringKey& key) {
  detail::setValueForKeyOfObject(receiver, value, key);
}

/// The same along a path of keys, "owner.name": nil where a value on the way is nil. A nil path
/// leads to the receiver itself, which can't be set.
Value valueForKeyPath(const Value& receiver, const NSString& keyPath);
void setValueForKeyPath(const Value& receiver, const Value& value, const NSString& keyPath);

}  // namespace zeb
