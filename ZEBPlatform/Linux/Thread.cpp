#include <ZEBPlatform/Linux/detail/Thread.h>

#include <limits.h>
#include <pthread.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <new>

namespace zeb {

namespace {

struct Start {
  void (*function)(void*);
  void* argument;
  const char* name;  ///< null for none
};

void* runStart(void* start) {
  const Start given = *static_cast<Start*>(start);
  delete static_cast<Start*>(start);
  if (given.name) setThreadName(pthread_self(), given.name);
  given.function(given.argument);
  return nullptr;
}

/// The attributes of a thread that no other thread joins.
class ThreadAttributes {
 public:
  ThreadAttributes() noexcept {
    pthread_attr_init(&attributes_);
    pthread_attr_setdetachstate(&attributes_, PTHREAD_CREATE_DETACHED);
  }
  ThreadAttributes(const ThreadAttributes&) = delete;
  ThreadAttributes& operator=(const ThreadAttributes&) = delete;
  ~ThreadAttributes() { pthread_attr_destroy(&attributes_); }

  pthread_attr_t& operator*() noexcept { return attributes_; }

 private:
  pthread_attr_t attributes_;
};

/// Answers false if the system refuses.
bool startWith(pthread_attr_t& attributes, const Start& start) noexcept {
  auto* const given = new (std::nothrow) Start(start);
  pthread_t thread;
  if (given && pthread_create(&thread, &attributes, &runStart, given) == 0) return true;
  delete given;
  return false;
}

/// All signals except those that a thread's own fault raises and those of profilers.
sigset_t signalsOfOthers() noexcept {
  sigset_t signals;
  sigfillset(&signals);
  for (const int own : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGPROF}) {
    sigdelset(&signals, own);
  }
  return signals;
}

void setStackSize(pthread_attr_t& attributes, std::size_t bytes) noexcept {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::size_t wanted = std::max(bytes, static_cast<std::size_t>(PTHREAD_STACK_MIN));
  pthread_attr_setstacksize(&attributes, (wanted + page - 1) / page * page);
}

}  // namespace

bool isMainThread() noexcept {
  // Asked again after a fork, because the thread that survives becomes the child's main thread.
  thread_local pid_t askedIn = -1;
  thread_local bool isMain = false;
  const pid_t process = getpid();
  if (askedIn != process) {
    isMain = gettid() == process;
    askedIn = process;
  }
  return isMain;
}

ThreadHandle currentThreadHandle() noexcept { return pthread_self(); }

bool sendSignal(ThreadHandle thread, int signal) noexcept {
  return pthread_kill(thread, signal) == 0;
}

void setThreadName(ThreadHandle thread, std::string_view name) noexcept {
  std::array<char, 16> text{};
  std::size_t length = std::min(name.size(), text.size() - 1);
  // The name must not end within a character, so the first byte that is cut off begins one.
  while (length > 0 && length < name.size() && (name[length] & 0xC0) == 0x80) --length;
  name.copy(text.data(), length);
  pthread_setname_np(thread, text.data());
}

void setExactTimeouts() noexcept { prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL); }

bool startThread(std::size_t stackBytes, void (*function)(void*), void* argument) noexcept {
  ThreadAttributes attributes;
  if (stackBytes) setStackSize(*attributes, stackBytes);
  return startWith(*attributes, {function, argument, nullptr});
}

bool startServiceThread(const char* name, void (*function)(void*), void* argument) noexcept {
  ThreadAttributes attributes;
  const sigset_t blocked = signalsOfOthers();
  pthread_attr_setsigmask_np(&*attributes, &blocked);
  return startWith(*attributes, {function, argument, name});
}

}  // namespace zeb
