#pragma once

#include <ZEBPlatform/Memory/Ref.h>

namespace zeb::detail {

/// Stops the process: `function` was called with nil for its `argument`.
[[noreturn]] void reportNil(const char* function, const char* argument) noexcept;

/// What an argument refers to that must not be nil.
template <class T>
T& notNil(const Ref<T>& object, const char* function, const char* argument) noexcept {
  if (!object) [[unlikely]]
    reportNil(function, argument);
  return *object;
}

}  // namespace zeb::detail
