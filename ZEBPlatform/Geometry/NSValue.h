#pragma once

#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Geometry/CGGeometry.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <concepts>
#include <string>
#include <typeinfo>
#include <variant>

namespace zeb {

/// The plain records that can travel inside a `Value`.
template <class T>
concept BoxableRecord =
    std::same_as<T, CGRect> || std::same_as<T, CGPoint> || std::same_as<T, CGSize> ||
    std::same_as<T, NSRange> || std::same_as<T, CGAffineTransform>;

/// A plain record as an object, so that collections can hold it. Immutable; any thread.
class NSValue final : public NSObject {
 public:
  using Content = std::variant<CGRect, CGPoint, CGSize, NSRange, CGAffineTransform>;

  explicit NSValue(const Content& content) noexcept : content_(content) {}

  const Content& content() const noexcept { return content_; }

  /// Equal if they hold equal records of the same type.
  bool isEqual(const NSObject& other) const noexcept override;
  std::size_t hash() const noexcept override;
  std::string description() const override;

 private:
  Content content_;
};

/// The record as a value.
Value boxed(const NSValue::Content& record);

/// The record in the value, valid as long as the value; null if the value was not made of this type
/// of record.
template <BoxableRecord Record>
const Record* unboxed(const Value& value) noexcept {
  const NSObject* object = value.objectPointer();
  // The class is final, so its objects have exactly its type, which is compared faster than cast.
  if (!object || typeid(*object) != typeid(NSValue)) return nullptr;
  return std::get_if<Record>(&static_cast<const NSValue*>(object)->content());
}

/// The range in a value that a selector got as its argument. Throws NSException
/// (NSInvalidArgumentException) if the value is no boxed range.
NSRange rangeArgument(const Value& value);

}  // namespace zeb
