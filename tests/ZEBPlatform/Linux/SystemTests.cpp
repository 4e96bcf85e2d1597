#include <ZEBPlatform/Linux/detail/Thread.h>
#include <ZEBPlatform/Linux/detail/ThreadState.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <semaphore>

#include "Support/Support.h"

namespace zeb::test {

TEST(ConsoleDeathTest, FatalWritesExactlyTheMessageAndAborts) {
  EXPECT_EXIT(fatal("100 %s sure"), testing::KilledBySignal(SIGABRT), "^100 %s sure\n$");
}

TEST(Thread, KnowsTheMainThreadAlsoAfterAFork) {
  EXPECT_TRUE(isMainThread());
  int status = -1;
  std::thread([&] {
    EXPECT_FALSE(isMainThread());
    const pid_t child = fork();
    if (child == 0) _exit(isMainThread() ? 0 : 1);
    waitpid(child, &status, 0);
  }).join();
  EXPECT_EQ(status, 0);
}

TEST(ThreadState, AThreadIsBlockedOnlyIfTheSystemSaysSo) {
  EXPECT_FALSE(isThreadBlocked(currentThreadIdentifier()));
  std::atomic<int> sleeper{0};
  std::binary_semaphore isOver(0);
  std::jthread thread([&] {
    sleeper = currentThreadIdentifier();
    isOver.acquire();
  });
  waitUntil([&] { return sleeper && isThreadBlocked(sleeper); }, "the other thread sleeps");
  rlimit limit;
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit none{0, limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);  // the system cannot be asked without a descriptor
  EXPECT_FALSE(isThreadBlocked(currentThreadIdentifier()) || isThreadBlocked(sleeper));
  setrlimit(RLIMIT_NOFILE, &limit);
  isOver.release();
}

}  // namespace zeb::test
