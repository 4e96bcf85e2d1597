#pragma once

#include <Memory/NSObject.h>

#include <any>
#include <utility>

namespace zeb {

/// Something that can be compared with anything.
class AnyEquatable {
 public:
  virtual ~AnyEquatable() = default;
  /// An empty `to` stands for nothing and is equal to nothing.
  virtual bool isEqual(const std::any& to) const = 0;
};

/// Gives an equatable type its comparison with anything: equal when the other is of the type itself and
/// compares equal.
///
///     class Version : public AnyEquatableAdopter<Version> { bool operator==(const Version&) const; … };
template <class Adopter>
class AnyEquatableAdopter : public AnyEquatable {
 public:
  bool isEqual(const std::any& to) const override {
    const auto* other = std::any_cast<Adopter>(&to);
    return other && static_cast<const Adopter&>(*this) == *other;
  }
};

/// A shared object as something that can be compared with anything: by the object's own equality, with what
/// `AnyEquatableObject::any` makes of another object.
class AnyEquatableObject : public AnyEquatable {
 public:
  explicit AnyEquatableObject(Ref<NSObject> object) noexcept : object_(std::move(object)) {}

  static std::any any(Ref<NSObject> object) { return object; }

  bool isEqual(const std::any& to) const override {
    const auto* other = std::any_cast<Ref<NSObject>>(&to);
    return object_ && other && *other && object_->isEqual(**other);
  }

 private:
  Ref<NSObject> object_;
};

}  // namespace zeb
