#include <Linux/Console.h>
#include <Linux/Thread.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

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

}  // namespace zeb::test
