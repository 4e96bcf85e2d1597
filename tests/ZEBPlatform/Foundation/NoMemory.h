#pragma once

namespace zeb::test {

/// While one lives, `operator new` fails on its thread.
struct NoMemory {
  NoMemory() noexcept { newFails = true; }
  ~NoMemory() { newFails = false; }
  static constinit thread_local bool newFails;
};

}  // namespace zeb::test
