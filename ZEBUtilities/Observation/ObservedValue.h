#pragma once

#include <ZEBPlatform/Memory/NSObject.h>

#include <utility>

namespace zeb {

/// One value on its way to all observers of an observable, which share it. Callers of the dynamic
/// runtime get it as it is for values of types that have no object form.
template <class T>
class ObservedValue final : public NSObject {
 public:
  explicit ObservedValue(T itsValue) : value(std::move(itsValue)) {}
  /// The value in what is known to be an `ObservedValue` of this type.
  static const T& in(const NSObject& box) noexcept {
    return static_cast<const ObservedValue&>(box).value;
  }

  const T value;
};

}  // namespace zeb
