#pragma once

#include <ZEBPlatform/Linux/detail/ThreadState.h>

namespace zeb::detail {

/// Asks the condition up to `maxSpins` times with a short rest before each, for things that other threads
/// mostly bring about sooner than a sleep and a wake-up would take. Whether the condition became true.
template <class Condition>
bool spin(int maxSpins, Condition&& condition) noexcept(noexcept(condition())) {
  for (int count = 0; count < maxSpins; ++count) {
    relaxProcessor();
    if (condition()) return true;
  }
  return false;
}

}  // namespace zeb::detail
