#pragma once

#include <Observation/ObservedValue.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Runtime/ValueConversion.h>

#include <concepts>

namespace zeb::detail {

/// The value in the box as an object: converted by `ValueConversion` if that knows the type, else
/// the box itself, an `ObservedValue<T>`.
template <class T>
Value bridgedObject(const Ref<NSObject>& boxedValue) {
  const T& value = ObservedValue<T>::in(*boxedValue);
  if constexpr (std::convertible_to<const T&, Value>) {
    return value;
  } else if constexpr (requires { ValueConversion<T>::toValue(value); }) {
    return ValueConversion<T>::toValue(value);
  } else {
    return boxedValue;
  }
}

}  // namespace zeb::detail
