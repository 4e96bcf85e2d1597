#pragma once

#include <cstdint>

namespace zeb::test {

/// While it lives, the program's clocks stand still and move only when the test moves them. Timer
/// descriptors that are set meanwhile become readable accordingly. One at a time.
class FakeClock {
 public:
  /// `monotonicTime` in nanoseconds is where the monotonic clock starts.
  explicit FakeClock(std::uint64_t monotonicTime = 1'000'000'000'000);
  FakeClock(const FakeClock&) = delete;
  FakeClock& operator=(const FakeClock&) = delete;
  ~FakeClock();

  /// Lets time pass for both clocks.
  void advance(double seconds);
  /// Sets the wall clock forward, as an administrator would.
  void setWallClockForward(double seconds);
  /// Makes every reading of the monotonic clock move it before by this time.
  void advanceAtEachReading(std::int64_t nanoseconds);
};

}  // namespace zeb::test
