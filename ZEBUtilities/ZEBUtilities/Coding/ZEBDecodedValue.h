#pragma once

#include <ZEBUtilities/Coding/ZEBEncodable.h>
#include <ZEBUtilities/Coding/ZEBUnarchiverError.h>

#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zeb {

/// Converts a decoded value to a static type; empty when the value is of another kind. Exists for
/// values and their handles, arithmetic types (from numbers), boxed records, `Ref`s to objects,
/// decodable types, vectors of these, and maps from strings or 64-bit integers to these. An object
/// with no other owner is moved out of the value instead of being copied. The author of a document
/// chooses the keys of its maps. Decode documents from outside into a map that is ordered
/// (`std::map`) or hashed under a secret key (`Dictionary`, `std::unordered_map<NSString, …>` or
/// one with `KeyedHash`), because collisions under the standard library's hash of `std::string` and
/// integers can be chosen.
template <class T>
struct DecodedValueAs;

namespace detail {

/// An element of an array: moved out when the array has no other owner, else shared.
inline Value taken(const Value& element, const Value& array) {
  return array.isUniquelyReferenced() ? std::move(const_cast<Value&>(element)) : element;
}

}  // namespace detail

template <std::derived_from<Value> Handle>
struct DecodedValueAs<Handle> {
  static std::optional<Handle> of(Value&& value) {
    Handle handle(std::move(value));
    if (handle.isNil()) return std::nullopt;
    return handle;
  }
};

template <class Number>
  requires std::is_arithmetic_v<Number>
struct DecodedValueAs<Number> {
  static std::optional<Number> of(Value&& value) {
    if (!value.isNumber()) return std::nullopt;
    if constexpr (std::same_as<Number, bool>) return value.boolValue();
    if constexpr (std::same_as<Number, float>) return value.floatValue();
    if constexpr (std::is_floating_point_v<Number>) return static_cast<Number>(value.doubleValue());
    if constexpr (std::is_signed_v<Number> && sizeof(Number) == 4) return value.intValue();
    return static_cast<Number>(std::is_signed_v<Number>
                                   ? static_cast<std::uint64_t>(value.longLongValue())
                                   : NSNumber(value).unsignedLongLongValue());
  }
};

template <BoxableRecord Record>
struct DecodedValueAs<Record> {
  static std::optional<Record> of(Value&& value) {
    const Record* record = unboxed<Record>(value);
    return record ? std::optional<Record>(*record) : std::nullopt;
  }
};

template <std::derived_from<NSObject> Object>
struct DecodedValueAs<Ref<Object>> {
  static std::optional<Ref<Object>> of(Value&& value) {
    Ref<Object> object = value.object<Object>();
    if (!object) return std::nullopt;
    return object;
  }
};

template <>
struct DecodedValueAs<std::string> {
  static std::optional<std::string> of(Value&& value) {
    return value.isString() ? std::optional(NSString(value).utf8()) : std::nullopt;
  }
};

template <>
struct DecodedValueAs<ZEBEncodable> {
  static std::optional<ZEBEncodable> of(Value&& value) {
    ZEBEncodable encodable = ZEBEncodable::from(std::move(value));
    if (encodable.isNil()) return std::nullopt;
    return encodable;
  }
};

template <ZEBEncodableType T>
struct DecodedValueAs<T> {
  static std::optional<T> of(Value&& value) {
    auto* box = detail::owningBox<T>(value);
    if (!box) return std::nullopt;
    if (value.isUniquelyReferenced()) return std::move(box->object);
    return box->object;
  }
};

template <class Element>
struct DecodedValueAs<std::vector<Element>> {
  static std::optional<std::vector<Element>> of(Value&& value) {
    if (!value.isArray()) return std::nullopt;
    const auto& array = *value.storageAs<detail::ArrayStorage>();
    std::vector<Element> elements;
    elements.reserve(array.count);
    for (const Value& object : std::span(array.values(), array.count)) {
      std::optional<Element> element = DecodedValueAs<Element>::of(detail::taken(object, value));
      if (!element) return std::nullopt;
      elements.push_back(std::move(*element));
    }
    return elements;
  }
};

template <class Map>
  requires requires {
    typename Map::key_type;
    typename Map::mapped_type;
  }
struct DecodedValueAs<Map> {
  static std::optional<Map> of(Value&& value) {
    if (!value.isDictionary()) return std::nullopt;
    Map map;
    for (const auto& [key, object] : NSDictionary(value)) {
      std::optional<typename Map::key_type> typedKey =
          DecodedValueAs<typename Map::key_type>::of(Value(key));
      std::optional<typename Map::mapped_type> typedObject =
          DecodedValueAs<typename Map::mapped_type>::of(Value(object));
      if (!typedKey || !typedObject) return std::nullopt;
      map.insert_or_assign(std::move(*typedKey), std::move(*typedObject));
    }
    return map;
  }
};

template <class T>
std::optional<T> decodedValueAs(Value value) {
  return DecodedValueAs<T>::of(std::move(value));
}

namespace detail {

template <class T>
struct OptionalOf {
  static constexpr bool isOptional = false;
  using Type = T;
};
template <class T>
struct OptionalOf<std::optional<T>> {
  static constexpr bool isOptional = true;
  using Type = T;
};

}  // namespace detail

template <class T>
T decodeTyped(ZEBDecoder& decoder, const StringKey& key) {
  using Wanted = typename detail::OptionalOf<T>::Type;
  if constexpr (detail::OptionalOf<T>::isOptional) {
    if (!decoder.containsValueForKey(key)) return std::nullopt;
  }
  std::optional<Wanted> object = decodedValueAs<Wanted>(decoder.decodeObjectForKey(key));
  if (!object) throw ZEBUnarchiverError::unexpectedDataType(key.string());
  return std::move(*object);
}

}  // namespace zeb
