#pragma once

#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Linux/detail/Console.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <list>
#include <random>
#include <thread>
#include <vector>

namespace zeb::test {

/// An object whose death is counted.
struct Probe : NSObject {
  explicit Probe(std::atomic<int>& counter) : deaths(counter) {}
  ~Probe() override {
    isAlive = false;
    ++deaths;
  }
  std::atomic<int>& deaths;
  std::atomic<bool> isAlive{true};
};

/// "name: reason" of the platform exception that the call throws; empty when it throws none.
inline std::string raisedText(const std::function<void()>& call) {
  try {
    call();
  } catch (const NSException& exception) {
    return exception.what();
  }
  return "";
}
inline std::string raisedName(const std::function<void()>& call) {
  const std::string text = raisedText(call);
  return text.substr(0, text.find(':'));
}

/// Repeats the step, by default a short sleep, until the condition holds. If it does not hold
/// within five minutes, the test program ends with a message that says what was expected.
/// `std::time` is a clock that `FakeClock` does not move.
inline void waitUntil(
    const std::function<bool()>& condition, const char* expected,
    const std::function<void()>& step = [] { usleep(100); }) {
  const std::time_t deadline = std::time(nullptr) + 300;
  while (!condition()) {
    if (std::time(nullptr) > deadline) {
      fatal(std::string("Waited for five minutes in vain until ") + expected + ".");
    }
    step();
  }
}

/// As `std::stable_sort`, with which clang warns about the standard library's headers.
template <class T, class Less>
void sortStably(std::vector<T>& elements, const Less& less) {
  std::list<T> list(elements.begin(), elements.end());
  list.sort(less);
  elements.assign(list.begin(), list.end());
}

/// Runs the work on a thread with a stack of 256 KiB and waits for it.
inline void runOnSmallStack(std::function<void()> work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 256 * 1024);
  const auto start = [](void* argument) -> void* {
    (*static_cast<std::function<void()>*>(argument))();
    return nullptr;
  };
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, start, &work), 0);
  ASSERT_EQ(pthread_join(thread, nullptr), 0);
}

/// Different keys of 32 characters that share one public hash, as an attacker would make them: the
/// hash takes in a word at a time and can be undone, so that for each first word there is a second
/// one that leads to the wanted state. Each key joins two of such pairs.
inline std::vector<std::string> collidingKeys(std::size_t count) {
  std::mt19937_64 random(1);
  const auto pairsFrom = [&](std::uint64_t state, std::uint64_t wantedState) {
    std::vector<std::string> pairs;
    while (pairs.size() * pairs.size() < count) {
      const std::uint64_t letters = 0x6161616161616161 + (random() & 0x0f0f0f0f0f0f0f0f);
      const std::uint64_t words[] = {letters, detail::mixHash(state, letters) ^ wantedState};
      const std::string pair(reinterpret_cast<const char*>(words), sizeof words);
      const auto isPlain = [](char c) { return c > ' ' && c < 127 && c != '"' && c != '\\'; };
      if (std::ranges::all_of(pair, isPlain)) pairs.push_back(pair);
    }
    return pairs;
  };
  constexpr std::uint64_t state = 0x6162636465666768;
  const std::vector<std::string> heads = pairsFrom(detail::startHash(32), state);
  const std::vector<std::string> tails = pairsFrom(detail::mixHash(state, 0), state);
  std::vector<std::string> keys;
  for (std::size_t i = 0; i < count; ++i)
    keys.push_back(heads[i / tails.size()] + tails[i % tails.size()]);
  return keys;
}

}  // namespace zeb::test
