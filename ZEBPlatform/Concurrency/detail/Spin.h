#pragma once

#include <ZEBPlatform/Linux/detail/ThreadState.h>

namespace zeb::detail {

/// Tests the condition up to `maxSpins` times, with a pause of the processor (about 15 to 50 ns)
/// before each test, and returns whether it became true. For events that other threads mostly bring
/// about sooner than a sleep and a wake-up would take, which is some microseconds.
///
/// It orders no memory: the condition must read with the ordering that the caller needs. Do not use
/// it without a limit or where the other thread may have to wait for this thread's processor.
template <class Condition>
bool spin(int maxSpins, Condition&& condition) noexcept(noexcept(condition())) {
  for (int count = 0; count < maxSpins; ++count) {
    relaxProcessor();
    if (condition()) return true;
  }
  return false;
}

}  // namespace zeb::detail
