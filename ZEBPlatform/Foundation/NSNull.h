#pragma once

#include <ZEBPlatform/Foundation/Value.h>

namespace zeb {

/// The single marker for `null` in JSON. It is not nil, and it answers no numeric reading.
class NSNull : public Value {
 public:
  static NSNull null() noexcept { return NSNull(); }

 private:
  constexpr NSNull() noexcept : Value(adoptWords, headOf(Kind::Null), 0) {}
};

}  // namespace zeb
