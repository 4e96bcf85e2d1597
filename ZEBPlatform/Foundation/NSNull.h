#pragma once

#include <ZEBPlatform/Foundation/Value.h>

namespace zeb {

/// The single marker that stands where JSON has `null`. It is not nil, and it answers no reading.
class NSNull : public Value {
 public:
  static NSNull null() noexcept { return NSNull(); }

 private:
  constexpr NSNull() noexcept : Value(adoptWords, headOf(Kind::Null), 0) {}
};

}  // namespace zeb
