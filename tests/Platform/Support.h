#pragma once

#include <Foundation/NSException.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <functional>
#include <random>

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

/// The name of the platform exception that the call throws; empty when it throws none.
template <class Call>
std::string raisedName(const Call& call) {
  try {
    call();
  } catch (const NSException& exception) {
    return exception.name().utf8();
  }
  return "";
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

/// Different keys of 16 characters that share one public hash, as an attacker would make them: the
/// hash takes a key in two words and can be undone, so that each first word has one second word that
/// leads to the wanted state.
inline std::vector<std::string> collidingKeys(std::size_t count) {
  std::mt19937_64 random(1);
  std::vector<std::string> keys;
  while (keys.size() < count) {
    std::string key(16, ' ');
    for (char& character : key) character = static_cast<char>('a' + random() % 26);
    const std::uint64_t second =
        detail::mixHash(16 * 0xA0761D6478BD642Fu, detail::loadWord(key.data())) ^
        0x6162636465666768;
    std::memcpy(&key[8], &second, 8);
    const auto isPlain = [](char c) { return c > ' ' && c < 127 && c != '"' && c != '\\'; };
    if (std::all_of(key.begin(), key.end(), isPlain)) keys.push_back(key);
  }
  return keys;
}

}  // namespace zeb::test
