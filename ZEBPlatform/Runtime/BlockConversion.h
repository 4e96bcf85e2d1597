#pragma once

#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Runtime/ValueConversion.h>

#include <optional>
#include <utility>

namespace zeb {

namespace detail {

template <class Signature>
struct BoxedBlock final : NSObject {
  explicit BoxedBlock(Block<Signature> itsBlock) : block(std::move(itsBlock)) {}
  const Block<Signature> block;
};

}  // namespace detail

/// Lets blocks travel through `send`. They arrive as blocks of exactly the same signature only.
template <class Signature>
struct ValueConversion<Block<Signature>> {
  static constexpr char typeCode = '@';
  static Value toValue(const Block<Signature>& block) {
    return block ? Value(makeRef<detail::BoxedBlock<Signature>>(block)) : Value();
  }
  static std::optional<Block<Signature>> fromValue(const Value& value) {
    if (value.isNil()) return Block<Signature>();
    const auto object = value.object<detail::BoxedBlock<Signature>>();
    if (!object) return std::nullopt;
    return object->block;
  }
};

}  // namespace zeb
