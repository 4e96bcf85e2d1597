// Catches the main thread while it hangs. A watchdog thread expects the main thread to run its run
// loop again and again. When the main thread has not done that for a while, the watchdog asks for
// its stack, which arrives as soon as the main thread gets back to its run loop.

#include <ZEBUtilities/ZEBUtilities.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

using namespace zeb;

namespace app {

/// Work that was never meant for so much input.
std::uint64_t countPairs(const std::vector<std::string>& names, const std::atomic<bool>& isSeen) {
  std::uint64_t pairs = 0;
  while (!isSeen) {
    for (const std::string& one : names) {
      for (const std::string& other : names) pairs += one < other;
    }
  }
  return pairs;
}

std::uint64_t refreshContacts(const std::atomic<bool>& isSeen) {
  const std::vector<std::string> names(1000, "a name");
  return countPairs(names, isSeen) + 1;
}

}  // namespace app

int main() {
  using namespace std::chrono_literals;
  const Ref<NSThread> mainThread = NSThread::currentThread();
  const Ref<NSRunLoop> loop = NSRunLoop::mainRunLoop();
  zeb_setCallStackPeekEnabled(mainThread, true);

  std::atomic<int> beats{0};
  std::atomic<bool> isSeen{false};
  const auto heart =
      ZEBTimer::scheduledTimerWithTimeInterval(0.01, [&](const Ref<ZEBTimer>&) { ++beats; }, true);

  NSArray stack;
  std::jthread watchdog([&] {
    for (int last = -1; last != beats; std::this_thread::sleep_for(200ms)) last = beats;
    // The hang ends after the stack has been captured. A real one ends by itself, or never; then
    // the request is never answered.
    std::jthread ending([&] {
      std::this_thread::sleep_for(100ms);
      isSeen = true;
    });
    stack = zeb_callStackSymbols(mainThread);
    loop->performBlock([&] { loop->stop(); });
  });

  loop->performBlock([&] { app::refreshContacts(isSeen); });
  loop->run();
  heart->invalidate();
  zeb_setCallStackPeekEnabled(mainThread, false);

  std::cout << "The main thread was hanging in:\n";
  bool isFound = false;
  for (const Value& line : stack) {
    std::cout << NSString(line) << '\n';
    isFound = isFound || NSString(line).containsString("app::refreshContacts(");
  }
  std::cout << "Load addresses of its images:\n"
            << ZEBSymbolication::loadAddressMapForStack(stack).description() << '\n';
  return isFound ? EXIT_SUCCESS : EXIT_FAILURE;
}
