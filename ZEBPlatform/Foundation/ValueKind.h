#pragma once

#include <cstdint>

namespace zeb {

/// What a `Value` is. CONTRIBUTING.md lists the places that a new kind of numbers touches.
enum class ValueKind : std::uint8_t {
  Nil = 0,
  Null,
  Boolean,
  SignedInteger,
  UnsignedInteger,
  Float,
  Double,
  Date,
  // From here on the payload is a counted pointer.
  String = 16,
  Data,
  URL,
  Array,
  Dictionary,
  Set,
  OrderedSet,
  Object,
};

}  // namespace zeb
