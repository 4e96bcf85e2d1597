#pragma once

#include <ZEBPlatform/Concurrency/detail/FrameStack.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <cstdint>
#include <utility>

namespace zeb::detail {

/// An object that a call keeps alive until it returns, so that a change of the object inside that
/// call needs no reference of its own. A local variable of a function that is not inlined.
class HeldObject : public FrameStack<HeldObject> {
 public:
  explicit HeldObject(Value object) noexcept : object_(std::move(object)) {}

  const Value& object() const noexcept { return object_; }
  /// Whether it is this object, and is held until the thing at `address` has ended. That is so for
  /// local variables of the functions that were called since, and these alone are stored between
  /// the frame of the calling function and this variable.
  bool holds(const NSObject& object, const void* address) const noexcept {
    const auto place = reinterpret_cast<std::uintptr_t>(address);
    return object_.objectPointer() == &object && place < reinterpret_cast<std::uintptr_t>(this) &&
           place > reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  }

 private:
  const Value object_;
};

}  // namespace zeb::detail
