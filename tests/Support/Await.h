#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace zeb::test {

/// Repeats `step` until the condition holds. Stops the program with a message after five minutes, which
/// even sanitized tests on a busy machine don't need.
template <class Condition, class Step>
void awaitThat(const Condition& condition, const char* what, const Step& step) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(5);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      std::fprintf(stderr, "Waited in vain until %s.\n", what);
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
