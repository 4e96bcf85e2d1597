#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Geometry/CLLocation.h>
#include <ZEBPlatform/Geometry/NSValue.h>
#include <ZEBUtilities/Coding/ZEBDecoder.h>
#include <ZEBUtilities/Coding/ZEBEncoder.h>

#include <concepts>
#include <functional>
#include <optional>
#include <ranges>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace zeb {

/// A value-model type that can be archived: it states its encodable name, which is stored in
/// documents and so must never change, and writes its fields into an encoder. There is no default
/// for the name.
///
///     struct Profile {
///       static const char* encodableName() { return "Profile"; }
///       void encode(ZEBEncoder& encoder) const { encoder.encodeString(name, "name"); }
///       explicit Profile(ZEBDecoder& decoder) : name(decoder.decodeStringForKey("name")) {}
///       NSString name;
///     };
///
/// In collections, objects of a type with `==` are equal by content, and are hashed by `std::hash`
/// of the type. Specialise it for types that become members of large sets or keys in large
/// dictionaries: without it all objects of the type have the same hash, and every search compares
/// them one by one.
template <class T>
concept ZEBEncodableType = requires(const T& object, ZEBEncoder& encoder) {
  { T::encodableName() } -> std::convertible_to<NSString>;
  object.encode(encoder);
};

/// An encodable type with a constructor that takes a decoder. The constructor may throw.
template <class T>
concept ZEBDecodableType = ZEBEncodableType<T> && std::constructible_from<T, ZEBDecoder&>;

/// The primitive kinds. They can be passed as encodables, but encoders and decoders handle them
/// directly.
template <class T>
concept PrimitiveType =
    std::is_arithmetic_v<T> || std::same_as<T, NSString> || std::same_as<T, NSNumber> ||
    std::same_as<T, NSData> || std::same_as<T, NSDate> || std::same_as<T, CGRect> ||
    std::same_as<T, CGPoint> || std::same_as<T, CGSize> || std::same_as<T, NSRange> ||
    std::same_as<T, Ref<CLLocation>>;

/// The protocol of shared objects that can be archived. Protocols derive virtually from the root
/// class, so that a class may implement several.
class ZEBObjCEncodable : public virtual NSObject {
 public:
  /// The same for all objects of a class. Must never change, because it is stored in documents.
  virtual NSString encodableName() const = 0;
  virtual void encodeWithEncoder(ZEBEncoder& encoder) const = 0;

  /// The protocol in the dynamic runtime, registered as "ZEBEncodable". A class that registers it
  /// as its superclass responds to encodableName and encodeWithEncoder: there (encoders are passed
  /// as described in Coding/ZEBEncoderConversion.h).
  static Class* runtimeClass();
};

namespace detail {

/// The encodable name of a primitive's kind; nil for nil.
NSString primitiveName(const Value& primitive);

/// An encodable object of any value-model type, in a form that collections can hold.
class EncodableBox : public NSObject {
 public:
  virtual NSString encodableName() const = 0;
  /// The same without a string of its own, as UTF-8; without data when the type gives no such text.
  virtual std::string_view encodableNameText() const = 0;
  virtual void encode(ZEBEncoder& encoder) const = 0;
};

template <class T>
concept HasStandardHash = requires(const T& object) {
  { std::hash<T>()(object) } -> std::convertible_to<std::size_t>;
};

template <ZEBEncodableType T>
std::string_view nameTextOf() {
  using Name = decltype(T::encodableName());
  if constexpr (std::same_as<Name, const char*>) {
    const char* const name = T::encodableName();
    return name ? std::string_view(name) : std::string_view();
  } else {
    return {};
  }
}

template <class T>
class OwningBox final : public EncodableBox {
 public:
  template <class Source>
  explicit OwningBox(Source&& source) : object(std::forward<Source>(source)) {}
  NSString encodableName() const override { return T::encodableName(); }
  std::string_view encodableNameText() const override { return nameTextOf<T>(); }
  void encode(ZEBEncoder& encoder) const override { object.encode(encoder); }
  bool isEqual(const NSObject& other) const override {
    if constexpr (std::equality_comparable<T>) {
      const auto* box = dynamic_cast<const OwningBox*>(&other);
      return box && box->object == object;
    } else {
      return this == &other;
    }
  }
  std::size_t hash() const noexcept override {
    if constexpr (!std::equality_comparable<T>) {
      return NSObject::hash();
    } else if constexpr (HasStandardHash<T>) {
      return std::hash<T>()(object);
    } else {
      return encodableName().hash();  // equal objects are not known to share anything else
    }
  }

  T object;
};

/// The box in a value, when it holds a `T`.
template <class T>
OwningBox<T>* owningBox(const Value& value) noexcept {
  if (!value.isObject()) return nullptr;
  NSObject& object = *value.objectPointer();
  // The class is final, so that comparing the type suffices, which is faster than a dynamic_cast.
  return typeid(object) == typeid(OwningBox<T>) ? static_cast<OwningBox<T>*>(&object) : nullptr;
}

/// Refers to an object that the caller owns and that outlives the encoding.
template <class T>
class BorrowingBox final : public EncodableBox {
 public:
  explicit BorrowingBox(const T& borrowed) noexcept : object_(borrowed) {}
  NSString encodableName() const override { return T::encodableName(); }
  std::string_view encodableNameText() const override { return nameTextOf<T>(); }
  void encode(ZEBEncoder& encoder) const override { object_.encode(encoder); }

 private:
  const T& object_;
};

}  // namespace detail

// The types that `ZEBEncoder::encodeObject` takes. Each overload makes a value. The value of an
// encodable object only refers to it, and must not outlive it.

template <std::derived_from<Value> Handle>
Value encodableValue(const Handle& handle) {
  return handle;
}
template <class Number>
  requires std::is_arithmetic_v<Number>
Value encodableValue(Number number) {
  return number;
}
inline Value encodableValue(const char* utf8) { return utf8; }
inline Value encodableValue(const std::string& utf8) { return utf8; }
inline Value encodableValue(std::string_view utf8) { return utf8; }
template <BoxableRecord Record>
Value encodableValue(const Record& record) {
  return boxed(record);
}
template <std::derived_from<NSObject> Object>
Value encodableValue(const Ref<Object>& object) {
  return Value(object);
}
/// Any encodable value: the type-erased form of `ZEBEncodableType`, and of the primitive kinds
/// (booleans, integers, floats, doubles, strings, numbers, data, dates, rectangles, points, sizes,
/// ranges, locations), which the encoder writes directly. A nullable shared handle to an immutable
/// object.
class ZEBEncodable {
 public:
  ZEBEncodable() noexcept = default;
  ZEBEncodable(std::nullptr_t) noexcept {}
  template <ZEBEncodableType T>
  ZEBEncodable(T object) : value_(makeRef<detail::OwningBox<T>>(std::move(object))) {}
  template <PrimitiveType Primitive>
  ZEBEncodable(const Primitive& primitive) : value_(encodableValue(primitive)) {}

  bool isNil() const noexcept { return value_.isNil(); }

  /// Nil for nil.
  NSString encodableName() const;
  /// Does nothing for nil. Stops the process for a primitive, because encoders write primitives
  /// directly.
  void encode(ZEBEncoder& encoder) const;

  /// The object when it is of this type, else null. Valid as long as this handle exists.
  template <ZEBEncodableType T>
  const T* as() const noexcept {
    const auto* box = detail::owningBox<T>(value_);
    return box ? &box->object : nullptr;
  }

  /// Conversion to an element for collections, and back (nil when the value is neither an encodable
  /// object nor a primitive).
  const Value& value() const& noexcept { return value_; }
  Value value() && noexcept { return std::move(value_); }
  static ZEBEncodable from(Value value) noexcept;

 private:
  Value value_;
};

inline Value encodableValue(const ZEBEncodable& encodable) { return encodable.value(); }
template <ZEBEncodableType T>
Value encodableValue(const T& object) {
  return makeRef<detail::BorrowingBox<T>>(object);
}
template <class T>
Value encodableValue(const std::optional<T>& object);
namespace detail {

/// Sequences whose elements can be referred to during the encoding, or are values or numbers.
template <class Sequence>
concept EncodableSequence =
    std::ranges::input_range<const Sequence> && !std::derived_from<Sequence, Value> &&
    !std::convertible_to<const Sequence&, const char*> &&
    (std::is_lvalue_reference_v<std::ranges::range_reference_t<const Sequence>> ||
     std::is_arithmetic_v<std::ranges::range_value_t<Sequence>> ||
     std::derived_from<std::ranges::range_value_t<Sequence>, Value>);

}  // namespace detail

/// Sequences become arrays; sequences of pairs, such as maps, become dictionaries. A view that
/// makes its elements when they are read is not accepted, unless they are values or numbers.
template <detail::EncodableSequence Sequence>
Value encodableValue(const Sequence& sequence);

namespace detail {

template <class Element>
concept KeyedElement = requires(const Element& element) {
  element.first;
  element.second;
};

}  // namespace detail

template <class T>
Value encodableValue(const std::optional<T>& object) {
  return object ? encodableValue(*object) : Value();
}

template <detail::EncodableSequence Sequence>
Value encodableValue(const Sequence& sequence) {
  if constexpr (detail::KeyedElement<std::ranges::range_value_t<Sequence>>) {
    NSMutableDictionary dictionary;
    for (const auto& [key, object] : sequence) {
      dictionary.setObject(encodableValue(object), encodableValue(key));
    }
    return dictionary;
  } else {
    NSMutableArray array;
    for (const auto& object : sequence) array.addObject(encodableValue(object));
    return array;
  }
}

namespace detail {

/// Objects that a box can hold. The type-erased form is not among them: its functions are not
/// static, but some compilers take it for an encodable type.
template <class T>
concept BoxableObject = ZEBEncodableType<T> && !std::same_as<T, ZEBEncodable>;

/// Sequences that become arrays.
template <class Sequence>
concept EncodableList =
    EncodableSequence<Sequence> && !KeyedElement<std::ranges::range_value_t<Sequence>> &&
    !std::convertible_to<const Sequence&, std::string_view>;

/// The value of an element that is neither an object nor a list, without counting references.
inline const Value& elementValue(const Value& value) noexcept { return value; }
inline const Value& elementValue(const ZEBEncodable& encodable) noexcept {
  return encodable.value();
}
template <class T>
  requires(!std::derived_from<T, Value>)
Value elementValue(const T& object) {
  return encodableValue(object);
}

template <class T>
void writeParts(ValueSink& sink, const T& object) {
  if constexpr (BoxableObject<T>) {
    sink.object(BorrowingBox<T>(object));
  } else if constexpr (EncodableList<T>) {
    sink.array([&] {
      for (const auto& element : object) {
        writeParts(sink, element);
        sink.endElement();
      }
    });
  } else {
    sink.value(elementValue(object));
  }
}

template <class T>
void encodeTyped(ZEBEncoder& encoder, const T& object, const StringKey& forKey) {
  if constexpr (BoxableObject<T> || EncodableList<T>) {
    if (encoder.encodeParts([&](ValueSink& sink) { writeParts(sink, object); }, forKey)) return;
    encoder.encodeObject(static_cast<const Value&>(encodableValue(object)), forKey);
  } else {
    encoder.encodeObject(static_cast<const Value&>(elementValue(object)), forKey);
  }
}

}  // namespace detail

}  // namespace zeb
