#pragma once

#include <Memory/NSObject.h>

#include <any>
#include <concepts>

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

/// Shared objects compare by their own equality: with the object in a `Ref<NSObject>`.
inline bool isEqual(const NSObject& object, const std::any& to) noexcept {
  const auto* other = std::any_cast<Ref<NSObject>>(&to);
  return other && *other && object.isEqual(**other);
}

}  // namespace zeb
