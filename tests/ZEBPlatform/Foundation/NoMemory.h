#pragma once

namespace zeb::test {

/// While one lives, `operator new` fails on its thread.
class NoMemory {
 public:
  NoMemory() noexcept;
  ~NoMemory();
  NoMemory(const NoMemory&) = delete;
  NoMemory& operator=(const NoMemory&) = delete;
};

}  // namespace zeb::test
