#pragma once

#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Runtime/ValueConversion.h>

#include <optional>

namespace zeb {

namespace detail {

struct BoxedErrorPointer final : NSObject {
  explicit BoxedErrorPointer(NSError* itsError) : error(itsError) {}
  NSError* const error;
};

}  // namespace detail

/// Lets the place for an error travel through `send`, by pointer: what is called fills in the
/// caller's own variable. The value only borrows, so that it is valid during the call only.
template <>
struct ValueConversion<NSError*> {
  static constexpr char typeCode = '^';
  static Value toValue(NSError* error) {
    return error ? Value(makeRef<detail::BoxedErrorPointer>(error)) : Value();
  }
  static std::optional<NSError*> fromValue(const Value& value) {
    if (value.isNil()) return nullptr;
    const auto object = value.object<detail::BoxedErrorPointer>();
    if (!object) return std::nullopt;
    return object->error;
  }
};

}  // namespace zeb
