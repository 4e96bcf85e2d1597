#pragma once

#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Runtime/ValueConversion.h>
#include <ZEBUtilities/Coding/ZEBEncoder.h>

#include <optional>

namespace zeb {

namespace detail {

struct BoxedEncoder final : NSObject {
  explicit BoxedEncoder(ZEBEncoder* itsEncoder) : encoder(itsEncoder) {}
  ZEBEncoder* const encoder;
};

}  // namespace detail

/// Lets `send` pass encoders, by pointer. The value does not own the encoder: both are valid during
/// the `encode` call only.
template <>
struct ValueConversion<ZEBEncoder*> {
  static constexpr char typeCode = '@';
  static Value toValue(ZEBEncoder* encoder) {
    return encoder ? Value(makeRef<detail::BoxedEncoder>(encoder)) : Value();
  }
  static std::optional<ZEBEncoder*> fromValue(const Value& value) {
    if (value.isNil()) return nullptr;
    const auto object = value.object<detail::BoxedEncoder>();
    if (!object) return std::nullopt;
    return object->encoder;
  }
};

}  // namespace zeb
