#pragma once

#include <ZEBPlatform/Memory/Ref.h>

namespace zeb::detail {

/// Stops the process, because `function` was called with nil for its `argument`.
[[noreturn]] void reportNil(const char* function, const char* argument) noexcept;

/// The object that an argument refers to; stops the process if the argument is nil.
template <class T>
T& notNil(const Ref<T>& object, const char* function, const char* argument) noexcept {
  if (!object) [[unlikely]]
    reportNil(function, argument);
  return *object;
}

}  // namespace zeb::detail
