#pragma once

#include <Foundation/Value.h>
#include <Memory/Block.h>
#include <Memory/NSObject.h>
#include <Runtime/ValueConversion.h>

#include <optional>
#include <utility>

namespace zeb {

namespace detail {

/// The block of a dynamic call that begins to observe.
struct UpdateBlock final : NSObject {
  explicit UpdateBlock(Block<void(const Value& value)> itsBlock) : block(std::move(itsBlock)) {}
  const Block<void(const Value& value)> block;
};

}  // namespace detail

/// Lets update blocks travel through `send`.
template <>
struct ValueConversion<Block<void(const Value& value)>> {
  using Update = Block<void(const Value& value)>;
  static constexpr char typeCode = '@';
  static Value toValue(const Update& block) {
    return block ? Value(makeRef<detail::UpdateBlock>(block)) : Value();
  }
  static std::optional<Update> fromValue(const Value& value) {
    if (value.isNil()) return Update();
    const Ref<detail::UpdateBlock> object = value.object<detail::UpdateBlock>();
    if (!object) return std::nullopt;
    return object->block;
  }
};

}  // namespace zeb
