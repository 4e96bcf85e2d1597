#include <ZEBPlatform/Concurrency/detail/BriefLock.h>
#include <ZEBPlatform/Concurrency/detail/Condition.h>
#include <ZEBPlatform/Concurrency/detail/InterruptibleSleep.h>
#include <ZEBPlatform/Concurrency/detail/ThreadGate.h>
#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/Linux/detail/ThreadState.h>

#include <deque>

#include "Support/Storm.h"

namespace zeb::test {

using namespace detail;

template <class AnyLock>
static void visitByFourThreads() {
  struct Guarded {
    AnyLock lock;
    int visits = 0;  // plain: the lock alone protects it
    bool isInside = false;
  };
  std::atomic<int> destroyed = 0;
  std::vector<Guarded*> all(300);
  for (Guarded*& object : all) object = new Guarded;
  storm(4, [&](int thread, std::mt19937& random) {
    for (Guarded* object : all) {
      for (int visit = 0; visit < 200; ++visit) {
        if (thread == 0) {
          while (!object->lock.try_lock()) std::this_thread::yield();
        } else {
          object->lock.lock();
        }
        EXPECT_FALSE(std::exchange(object->isInside, true));
        if (random() % 512 == 0) std::this_thread::yield();  // the others exhaust their spinning
        const bool isLast = ++object->visits == 4 * 200;
        object->isInside = false;
        object->lock.unlock();
        if (!isLast) continue;
        delete object;
        ++destroyed;
      }
    }
  });
  EXPECT_EQ(destroyed, 300);
}

TEST(Lock, KeepsThreadsApartAndMayBeDestroyedByItsNextOwner) {
  visitByFourThreads<Lock>();
  visitByFourThreads<BriefLock>();
}

TEST(Condition, WakesEachThreadThatWaitsForRoomOrForContent) {
  Lock lock;
  Condition hasRoom, hasContent;
  std::deque<int> content;
  std::int64_t balance = 0;
  storm(6, [&](int thread, std::mt19937& random) {
    for (int round = 0; round < 20'000; ++round) {
      const LockGuard guard(lock);
      if (thread % 2 == 0) {
        while (content.size() == 3) hasRoom.wait(lock);
        content.push_back(static_cast<int>(random() % 1000));
        balance += content.back();
        hasContent.notifyOne();
      } else {
        while (content.empty()) hasContent.wait(lock);
        balance -= content.front();
        content.pop_front();
        hasRoom.notifyAll();
      }
    }
  });
  EXPECT_TRUE(content.empty() && balance == 0);

  const LockGuard guard(lock);
  const std::uint64_t deadline = mach_absolute_time() + 1'000'000;
  while (mach_absolute_time() < deadline) hasContent.waitUntil(lock, deadline);
  EXPECT_FALSE(lock.try_lock()) << "the wait has locked it again";
}

TEST(ThreadGate, PassesAThreadThatSpinsSleepsOrComesLate) {
  std::atomic<ThreadGate*> offered{nullptr};
  int opened = 0;  // plain: the gate orders the two threads
  storm(2, [&](int thread, std::mt19937& random) {
    for (int round = 0; round < 5000; ++round) {
      const auto pause = [&] {
        for (auto rest = random() % 600; rest > 0; --rest) relaxProcessor();
      };
      if (thread == 0) {
        ThreadGate gate;  // destroyed as soon as the wait returns
        offered = &gate;
        if (random() % 4 == 0) pause();
        if (!gate.spinUntilOpen()) gate.sleepUntilOpen();
        EXPECT_EQ(opened, round + 1);
      } else {
        ThreadGate* gate = nullptr;
        while (!(gate = offered.exchange(nullptr))) std::this_thread::yield();
        pause();
        ++opened;
        gate->open();
      }
    }
  });
}

TEST(InterruptibleSleep, EndsByEachWakeUpAndAtItsMoment) {
  InterruptibleSleep ping, pong;
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
