#pragma once

#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

namespace zeb::test {

/// Seconds of a clock that a `FakeClock` does not stop.
inline time_t realTime() {
  timespec now{};
  clock_gettime(CLOCK_BOOTTIME, &now);
  return now.tv_sec;
}

/// Repeats `step` until the condition holds. Stops the program with a message after five minutes,
/// which is longer than any sanitized test needs on a busy machine.
template <class Condition, class Step>
void awaitThat(const Condition& condition, const char* what, const Step& step) {
  const time_t deadline = realTime() + 300;
  while (!condition()) {
    if (realTime() > deadline) {
      std::fprintf(stderr, "Waited for five minutes, but not: %s.\n", what);
      std::abort();
    }
    step();
  }
}

template <class Condition>
void awaitThat(const Condition& condition, const char* what) {
  awaitThat(condition, what, [] { std::this_thread::yield(); });
}

}  // namespace zeb::test
