#include <ZEBPlatform/Concurrency/detail/InterruptibleSleep.h>
#include <ZEBPlatform/Concurrency/detail/ThreadGate.h>
#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/Linux/detail/ThreadState.h>

#include "Support/Storm.h"

namespace zeb::test {

TEST(ThreadGate, PassesAThreadThatSpinsSleepsOrComesLate) {
  std::atomic<detail::ThreadGate*> offered{nullptr};
  int opened = 0;  // plain: the gate orders the two threads
  storm(2, [&](int thread, std::mt19937& random) {
    for (int round = 0; round < 5000; ++round) {
      const auto pause = [&] {
        for (auto rest = random() % 600; rest > 0; --rest) relaxProcessor();
      };
      if (thread == 0) {
        detail::ThreadGate gate;  // destroyed as soon as the wait returns
        offered = &gate;
        if (random() % 4 == 0) pause();
        if (!gate.spinUntilOpen()) gate.sleepUntilOpen();
        EXPECT_EQ(opened, round + 1);
      } else {
        detail::ThreadGate* gate = nullptr;
        while (!(gate = offered.exchange(nullptr))) std::this_thread::yield();
        pause();
        ++opened;
        gate->open();
      }
    }
  });
}

TEST(InterruptibleSleep, EndsByEachWakeUpAndAtItsMoment) {
  detail::InterruptibleSleep ping, pong;
  int counter = 0;  // plain: the sleeps order the two threads
  storm(2, [&](int thread, std::mt19937&) {
    for (int round = 0; round < 5000; ++round) {
      if (thread == 1) ping.sleep();
      ++counter;
      (thread == 0 ? ping : pong).wake();
      if (thread == 0) pong.sleep();
    }
  });
  EXPECT_EQ(counter, 10'000);

  const std::uint64_t moment = mach_absolute_time() + 1'000'000;
  ping.setMoment(moment);
  ping.sleep();
  EXPECT_GE(mach_absolute_time(), moment);
  storm(2, [&](int thread, std::mt19937&) {
    if (thread == 0) ping.sleep();  // the last moment was reset to never
    if (thread == 1) ping.setMoment(moment);
  });
}

}  // namespace zeb::test
