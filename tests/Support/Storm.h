#pragma once

#include <barrier>

#include "Support/Support.h"

namespace zeb::test {

/// Calls the work on several threads that begin together, and returns when all have ended. Each
/// thread gets its number and random numbers that are the same in each run. A deadlock or a lost
/// wake-up ends the test program with a message.
inline void storm(int threads, const std::function<void(int thread, std::mt19937& random)>& work) {
  std::barrier start(threads);
  std::atomic<int> running = threads;
  std::vector<std::jthread> all;
  for (int thread = 0; thread < threads; ++thread) {
    all.emplace_back([&, thread] {
      std::mt19937 random(static_cast<unsigned>(thread));
      start.arrive_and_wait();
      work(thread, random);
      --running;
    });
  }
  waitUntil([&] { return running == 0; }, "all threads of the storm have ended");
}

}  // namespace zeb::test
