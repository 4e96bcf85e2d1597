#pragma once

#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Runtime/ValueConversion.h>

#include <optional>

namespace zeb::detail {

template <class T>
struct BoxedPointer final : NSObject {
  explicit BoxedPointer(T* itsTarget) : target(itsTarget) {}
  T* const target;
};

/// Base of a `ValueConversion<T*>`: lets `send` pass a pointer to something that is no `NSObject`.
/// The value does not own the target, so that it is valid during the call only.
template <class T, char code>
struct BorrowedPointerConversion {
  static constexpr char typeCode = code;
  static Value toValue(T* target) {
    return target ? Value(makeRef<BoxedPointer<T>>(target)) : Value();
  }
  static std::optional<T*> fromValue(const Value& value) {
    if (value.isNil()) return nullptr;
    const auto box = value.object<BoxedPointer<T>>();
    if (!box) return std::nullopt;
    return box->target;
  }
};

}  // namespace zeb::detail
