#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSNull.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/ProtocolRef.h>
#include <ZEBPlatform/Runtime/SEL.h>

#include <concepts>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zeb {

/// How a C++ type travels through dynamic calls. Specialise it for types of your own:
///
///     typeCode             the type's letter in type encodings; '@' for objects
///     toValue(T)           the value that stands for it
///     fromValue(Value)     an optional, empty if the value is of another kind
///
/// Here: numbers and enumerations (read from nil as 0, and from every value that reads as a
/// number), all value handles, `Value` itself, `Ref<T>` and `T*` for objects (and classes),
/// `ProtocolRef<P>` for objects that implement the protocol, untyped pointers (as their addresses,
/// which are numbers), texts, selectors (as their names), types that, like `NSError`, convert to
/// `Value` and have a static `from`, and of all these `std::optional` (as nil if empty),
/// `std::vector` (as an array), `std::map` and `std::unordered_map` (as a dictionary). Containers
/// are copied in both directions and read from nil as empty; nil elements are null inside.
template <class T>
struct ValueConversion;

namespace detail {

/// Types that `ValueConversion` knows in both directions.
template <class T>
concept DynamicType = requires(const T& thing, const Value& value) {
  ValueConversion<T>::typeCode;
  ValueConversion<T>::toValue(thing);
  ValueConversion<T>::fromValue(value);
};

template <class Number>
constexpr char numberTypeCode() noexcept {
  if constexpr (std::same_as<Number, bool>) return 'B';
  if constexpr (std::same_as<Number, float>) return 'f';
  if constexpr (std::is_floating_point_v<Number>) return 'd';
  constexpr char codes[] = "csiq";
  constexpr int width = sizeof(Number) == 1   ? 0
                        : sizeof(Number) == 2 ? 1
                        : sizeof(Number) == 4 ? 2
                                              : 3;
  return std::is_signed_v<Number> ? codes[width] : static_cast<char>(codes[width] - 'a' + 'A');
}

/// A handle whose `from` shares a mutable value, where the constructor would copy it.
template <class T>
concept MadeByFrom = requires(const Value& value, const T& handle) {
  { T::from(value) } -> std::same_as<T>;
  handle.isNil();
};

}  // namespace detail

template <class Number>
  requires std::is_arithmetic_v<Number>
struct ValueConversion<Number> {
  static constexpr char typeCode = detail::numberTypeCode<Number>();
  static Value toValue(Number number) noexcept { return Value(number); }
  static std::optional<Number> fromValue(const Value& value) noexcept {
    if (!value.isNil() && !value.respondsToNumericReadings()) return std::nullopt;
    if constexpr (std::same_as<Number, bool>) return value.boolValue();
    if constexpr (std::is_floating_point_v<Number>) return static_cast<Number>(value.doubleValue());
    if constexpr (std::is_unsigned_v<Number>) {
      if (value.isNumber()) return static_cast<Number>(NSNumber(value).unsignedLongLongValue());
    }
    return static_cast<Number>(value.longLongValue());
  }
};

template <class Enumeration>
  requires std::is_enum_v<Enumeration>
struct ValueConversion<Enumeration> {
  using Number = ValueConversion<std::underlying_type_t<Enumeration>>;
  static constexpr char typeCode = Number::typeCode;
  static Value toValue(Enumeration enumerator) noexcept {
    return Number::toValue(static_cast<std::underlying_type_t<Enumeration>>(enumerator));
  }
  static std::optional<Enumeration> fromValue(const Value& value) noexcept {
    const auto number = Number::fromValue(value);
    if (!number) return std::nullopt;
    return static_cast<Enumeration>(*number);
  }
};

template <class Handle>
  requires std::derived_from<Handle, Value> ||
           (detail::MadeByFrom<Handle> && std::convertible_to<Handle, Value>)
struct ValueConversion<Handle> {
  static constexpr char typeCode = '@';
  static Value toValue(const Handle& handle) noexcept { return handle; }
  static std::optional<Handle> fromValue(const Value& value) {
    std::optional<Handle> handle;
    if constexpr (detail::MadeByFrom<Handle>) {
      handle = Handle::from(value);
    } else {
      handle.emplace(value);
    }
    if (handle->isNil() && !value.isNil()) handle.reset();
    return handle;
  }
};

template <std::derived_from<NSObject> Object>
struct ValueConversion<Ref<Object>> {
  static constexpr char typeCode = '@';
  static Value toValue(const Ref<Object>& object) noexcept {
    return Ref<NSObject>(const_cast<std::remove_const_t<Object>*>(object.get()));
  }
  static std::optional<Ref<Object>> fromValue(const Value& value) noexcept {
    Ref<Object> object = value.object<std::remove_const_t<Object>>();
    if (!object && !value.isNil()) return std::nullopt;
    return object;
  }
};

/// Borrowed from the value.
template <std::derived_from<NSObject> Object>
struct ValueConversion<Object*> {
  static constexpr char typeCode = '@';
  static Value toValue(Object* object) noexcept {
    return ValueConversion<Ref<Object>>::toValue(Ref<Object>(object));
  }
  static std::optional<Object*> fromValue(const Value& value) noexcept {
    auto* object = dynamic_cast<Object*>(value.objectPointer());
    if (!object && !value.isNil()) return std::nullopt;
    return object;
  }
};

template <class Protocol>
struct ValueConversion<ProtocolRef<Protocol>> {
  static constexpr char typeCode = '@';
  static Value toValue(const ProtocolRef<Protocol>& object) noexcept { return object.object(); }
  static std::optional<ProtocolRef<Protocol>> fromValue(const Value& value) noexcept {
    auto object = ProtocolRef<Protocol>::from(value.object<NSObject>());
    if (!object && !value.isNil()) return std::nullopt;
    return object;
  }
};

/// Contexts and keys, which are never dereferenced.
template <class Pointer>
  requires std::same_as<Pointer, void*> || std::same_as<Pointer, const void*>
struct ValueConversion<Pointer> {
  static constexpr char typeCode = '^';
  static Value toValue(Pointer pointer) noexcept {
    return reinterpret_cast<std::uintptr_t>(pointer);
  }
  static std::optional<Pointer> fromValue(const Value& value) noexcept {
    if (value.isNil()) return nullptr;
    if (!value.isNumber()) return std::nullopt;
    return reinterpret_cast<Pointer>(
        static_cast<std::uintptr_t>(NSNumber(value).unsignedLongLongValue()));
  }
};

template <class Text>
  requires std::same_as<Text, std::string> || std::same_as<Text, std::string_view> ||
           std::same_as<Text, const char*>
struct ValueConversion<Text> {
  static constexpr char typeCode = '@';
  static Value toValue(const Text& text) { return Value(text); }
  static std::optional<std::string> fromValue(const Value& value) {
    static_assert(std::same_as<Text, std::string>, "take an NSString or a std::string");
    if (!value.isNil() && !value.isString()) return std::nullopt;
    return NSString(value).utf8();
  }
};

template <>
struct ValueConversion<SEL> {
  static constexpr char typeCode = ':';
  static Value toValue(SEL selector) { return selector ? NSString(selector.name()) : NSString(); }
  static std::optional<SEL> fromValue(const Value& value) {
    if (value.isNil()) return SEL();
    if (!value.isString()) return std::nullopt;
    return sel_registerName(NSString(value).utf8());
  }
};

template <detail::DynamicType T>
struct ValueConversion<std::optional<T>> {
  static constexpr char typeCode = '@';
  static Value toValue(const std::optional<T>& thing) {
    return thing ? ValueConversion<T>::toValue(*thing) : Value();
  }
  static std::optional<std::optional<T>> fromValue(const Value& value) {
    if (value.isNil() || value.isNull()) return std::optional<T>();
    std::optional<T> thing = ValueConversion<T>::fromValue(value);
    if (!thing) return std::nullopt;
    return thing;
  }
};

namespace detail {

/// What stands for a thing inside an array or a dictionary.
template <class T>
Value elementOf(const T& thing) {
  Value value = ValueConversion<T>::toValue(thing);
  return value.isNil() ? Value(NSNull::null()) : value;
}

template <class Map>
struct MapConversion {
  using Key = typename Map::key_type;
  using Mapped = typename Map::mapped_type;
  static constexpr char typeCode = '@';
  static Value toValue(const Map& map) {
    NSMutableDictionary dictionary;
    for (const auto& [key, thing] : map) {
      dictionary.setObject(elementOf<Mapped>(thing), elementOf<Key>(key));
    }
    return dictionary;
  }
  static std::optional<Map> fromValue(const Value& value) {
    const NSDictionary dictionary(value);
    if (dictionary.isNil() && !value.isNil()) return std::nullopt;
    Map map;
    for (const auto& [key, thing] : dictionary) {
      std::optional<Key> convertedKey = ValueConversion<Key>::fromValue(key);
      std::optional<Mapped> converted = ValueConversion<Mapped>::fromValue(thing);
      if (!convertedKey || !converted) return std::nullopt;
      map.emplace(*std::move(convertedKey), *std::move(converted));
    }
    return map;
  }
};

}  // namespace detail

template <detail::DynamicType T>
struct ValueConversion<std::vector<T>> {
  static constexpr char typeCode = '@';
  static Value toValue(const std::vector<T>& things) {
    NSMutableArray array;
    for (const T& thing : things) array.addObject(detail::elementOf<T>(thing));
    return array;
  }
  static std::optional<std::vector<T>> fromValue(const Value& value) {
    const NSArray array(value);
    if (array.isNil() && !value.isNil()) return std::nullopt;
    std::vector<T> things;
    things.reserve(array.count());
    for (const Value& element : array) {
      std::optional<T> thing = ValueConversion<T>::fromValue(element);
      if (!thing) return std::nullopt;
      things.push_back(*std::move(thing));
    }
    return things;
  }
};

template <detail::DynamicType Key, detail::DynamicType T>
struct ValueConversion<std::map<Key, T>> : detail::MapConversion<std::map<Key, T>> {};
template <detail::DynamicType Key, detail::DynamicType T>
struct ValueConversion<std::unordered_map<Key, T>>
    : detail::MapConversion<std::unordered_map<Key, T>> {};

}  // namespace zeb
