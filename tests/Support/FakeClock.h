#pragma once

#include <cstdint>

namespace zeb::test {

/// While it lives, the program's clocks stand still and go only where the test moves them. Timer
/// descriptors that are set meanwhile become readable accordingly. One at a time.
class FakeClock {
 public:
  FakeClock();
  ~FakeClock();

  /// Lets time pass for both clocks.
  void advance(double seconds);
  /// Sets the wall clock forward, as an administrator would.
  void setWallClockForward(double seconds);
};

}  // namespace zeb::test
