#include <ZEBPlatform/Linux/detail/LoadedImages.h>
#include <ZEBPlatform/Linux/detail/Thread.h>
#include <ZEBPlatform/Linux/detail/ThreadState.h>
#include <dlfcn.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
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

TEST(LoadedImages, OnlyAnInterruptedFunctionCanBeAtItsFirstInstruction) {
  const auto previous = std::signal(SIGUSR2, [](int) {});
  // The kernel's own structure, because ThreadSanitizer answers another one in its place.
  struct {
    void* handler;
    unsigned long flags;
    void* restorer;
    std::uint64_t mask;
  } action{};
  ASSERT_EQ(syscall(SYS_rt_sigaction, SIGUSR2, nullptr, &action, sizeof action.mask), 0);
  std::signal(SIGUSR2, previous);
  void* const start = dlsym(RTLD_DEFAULT, "frexp");
  void* const stack[] = {start, static_cast<char*>(start) + 1, action.restorer, start};
  const std::vector<CodeLocation> locations = locationsOfCode(stack);
  EXPECT_NE(locations[0].symbolAddress, locations[1].symbolAddress) << "a call before it";
  EXPECT_EQ(locations[1].symbolAddress, reinterpret_cast<std::uintptr_t>(start));
  EXPECT_EQ(locations[3].symbolAddress, locations[1].symbolAddress) << "interrupted";
}

TEST(LoadedImages, SizesThatAnImageStatesAreNotTrusted) {
  void* const library = dlopen("libm.so.6", RTLD_LAZY);
  ASSERT_TRUE(library) << dlerror();
  link_map* image = nullptr;
  dlinfo(library, RTLD_DI_LINKMAP, &image);
  const ElfW(Dyn)* entry = image->l_ld;
  while (entry->d_tag != DT_GNU_HASH) ++entry;
  auto* const hash = reinterpret_cast<std::uint32_t*>(entry->d_un.d_ptr);
  const auto page = entry->d_un.d_ptr & -std::uintptr_t(sysconf(_SC_PAGESIZE));
  ASSERT_EQ(mprotect(reinterpret_cast<void*>(page), 4096, PROT_READ | PROT_WRITE), 0);
  void* const function = static_cast<char*>(dlsym(library, "frexp")) + 1;
  for (const int word : {3, 0, 1, 2}) {  // the first one is not a size
    const std::uint32_t kept = std::exchange(hash[word], 0xFFFF'FFF0);
    EXPECT_EQ(locationsOfCode({&function, 1})[0].symbol.empty(), word != 3) << word;
    hash[word] = kept;
  }
  dlclose(library);
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
