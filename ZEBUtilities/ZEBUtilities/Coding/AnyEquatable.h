#pragma once

#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <any>
#include <concepts>
#include <cstddef>
#include <utility>

namespace zeb {

/// Something that can be compared with anything.
class AnyEquatable {
 public:
  virtual ~AnyEquatable() = default;

  /// Compares with a value of any type. A `Ref` to a subclass compares as the object that it refers to. An
  /// empty `std::any` and nullptr stand for nothing, which is equal to nothing.
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
  /// What adopters implement. Shared objects come as `Ref<NSObject>`, all else as its own type.
  virtual bool isEqualToAny(const std::any& to) const = 0;
};

/// Gives an equatable type its comparison with anything: equal when the other is of the type itself and
/// compares equal.
///
///     class Version : public AnyEquatableAdopter<Version> { bool operator==(const Version&) const; … };
template <class Adopter>
class AnyEquatableAdopter : public AnyEquatable {
 protected:
  bool isEqualToAny(const std::any& to) const override {
    const auto* other = std::any_cast<Adopter>(&to);
    return other && static_cast<const Adopter&>(*this) == *other;
  }
};

/// A shared object as something that can be compared with anything: by the object's own equality, with
/// another object in a `Ref` of any class or in a value.
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
