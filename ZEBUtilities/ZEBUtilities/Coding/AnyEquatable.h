#pragma once

#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <any>
#include <concepts>
#include <cstddef>
#include <utility>

namespace zeb {

/// The interface of objects that can be compared with values of any type.
class AnyEquatable {
 public:
  virtual ~AnyEquatable() = default;

  /// Compares with a value of any type. A `Ref` to a subclass compares as the object that it refers
  /// to. An empty `std::any` and nullptr stand for no value, which is equal to no object.
  template <class Other>
  bool isEqual(const Other& to) const {
    if constexpr (std::same_as<Other, std::any>) {
      return isEqualToAny(to);
    } else if constexpr (std::same_as<Other, std::nullptr_t>) {
      return isEqualToAny({});
    } else if constexpr (std::convertible_to<const Other&, Ref<NSObject>>) {
      return isEqualToAny(Ref<NSObject>(to));
    } else {
      return isEqualToAny(to);
    }
  }

 protected:
  /// For implementing classes. Shared objects are passed as `Ref<NSObject>`, other values as their
  /// own types.
  virtual bool isEqualToAny(const std::any& to) const = 0;
};

/// Base class that implements `AnyEquatable` for an equatable type: the other value is equal when
/// it has the same type and `==` says so.
///
///     class Version : public AnyEquatableAdopter<Version> {
///       bool operator==(const Version&) const;
///     };
template <class Adopter>
class AnyEquatableAdopter : public AnyEquatable {
 protected:
  bool isEqualToAny(const std::any& to) const override {
    const auto* other = std::any_cast<Adopter>(&to);
    return other && static_cast<const Adopter&>(*this) == *other;
  }
};

/// Makes a shared object comparable with values of any type. Uses the object's own equality, and
/// compares with objects in a `Ref` of any class or in a `Value`.
class AnyEquatableObject : public AnyEquatable {
 public:
  explicit AnyEquatableObject(Ref<NSObject> object) noexcept : object_(std::move(object)) {}

  static std::any any(Ref<NSObject> object) { return object; }

 protected:
  bool isEqualToAny(const std::any& to) const override {
    const NSObject* other = nullptr;
    if (const auto* object = std::any_cast<Ref<NSObject>>(&to)) {
      other = object->get();
    } else if (const auto* value = std::any_cast<Value>(&to)) {
      other = value->objectPointer();
    }
    return object_ && other && object_->isEqual(*other);
  }

 private:
  Ref<NSObject> object_;
};

}  // namespace zeb
