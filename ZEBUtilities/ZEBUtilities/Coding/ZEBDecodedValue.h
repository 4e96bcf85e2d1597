#pragma once

#include <ZEBUtilities/Coding/ZEBEncodable.h>
#include <ZEBUtilities/Coding/ZEBUnarchiverError.h>

#include <optional>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zeb {

/// How a decoded value becomes a static type; empty when it is of another kind. Values and their
/// handles, arithmetic types (from numbers), boxed records, `Ref`s to objects, decodable types, vectors
/// of these, and maps from strings or 64-bit integers to these.
template <class T>
struct DecodedValueAs;

template <std::derived_from<Value> Handle>
struct DecodedValueAs<Handle> {
  static std::optional<Handle> of(const Value& value) {
    Handle handle(value);
    if (handle.isNil()) return std::nullopt;
    return handle;
  }
};

template <class Number>
  requires std::is_arithmetic_v<Number>
struct DecodedValueAs<Number> {
  static std::optional<Number> of(const Value& value) {
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
  static std::optional<Record> of(const Value& value) {
    const Record* record = unboxed<Record>(value);
    return record ? std::optional<Record>(*record) : std::nullopt;
  }
};

template <std::derived_from<NSObject> Object>
struct DecodedValueAs<Ref<Object>> {
  static std::optional<Ref<Object>> of(const Value& value) {
    Ref<Object> object = value.object<Object>();
    if (!object) return std::nullopt;
    return object;
  }
};

template <>
struct DecodedValueAs<std::string> {
  static std::optional<std::string> of(const Value& value) {
    return value.isString() ? std::optional(NSString(value).utf8()) : std::nullopt;
  }
};

template <>
struct DecodedValueAs<ZEBEncodable> {
  static std::optional<ZEBEncodable> of(const Value& value) {
    ZEBEncodable encodable = ZEBEncodable::from(value);
    if (encodable.isNil()) return std::nullopt;
    return encodable;
  }
};

template <ZEBEncodableType T>
struct DecodedValueAs<T> {
  static std::optional<T> of(const Value& value) {
    const auto* box = dynamic_cast<const detail::OwningBox<T>*>(value.objectPointer());
    return box ? std::optional<T>(box->object) : std::nullopt;
  }
};

template <class Element>
struct DecodedValueAs<std::vector<Element>> {
  static std::optional<std::vector<Element>> of(const Value& value) {
    if (!value.isArray()) return std::nullopt;
    std::vector<Element> elements;
    elements.reserve(NSArray(value).count());
    for (const Value& object : NSArray(value)) {
      std::optional<Element> element = DecodedValueAs<Element>::of(object);
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
  static std::optional<Map> of(const Value& value) {
    if (!value.isDictionary()) return std::nullopt;
    Map map;
    for (const auto& [key, object] : NSDictionary(value)) {
      std::optional<typename Map::key_type> typedKey =
          DecodedValueAs<typename Map::key_type>::of(key);
      std::optional<typename Map::mapped_type> typedObject =
          DecodedValueAs<typename Map::mapped_type>::of(object);
      if (!typedKey || !typedObject) return std::nullopt;
      map.insert_or_assign(std::move(*typedKey), std::move(*typedObject));
    }
    return map;
  }
};

template <class T>
std::optional<T> decodedValueAs(const Value& value) {
  return DecodedValueAs<T>::of(value);
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
