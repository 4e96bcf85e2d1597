#include <Linux/Thread.h>

#include <limits.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace zeb {

namespace {

struct Start {
  void (*function)(void*);
  void* argument;
};

void* runStart(void* start) {
  const Start given = *static_cast<Start*>(start);
  delete static_cast<Start*>(start);
  given.function(given.argument);
  return nullptr;
}

void setStackSize(pthread_attr_t& attributes, std::size_t bytes) noexcept {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::size_t least = std::max(bytes, static_cast<std::size_t>(PTHREAD_STACK_MIN));
  pthread_attr_setstacksize(&attributes, (least + page - 1) / page * page);
}

}  // namespace

bool isMainThread() noexcept {
  // Asked anew after a fork, whose surviving thread becomes the child's main thread.
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

void setThreadName(ThreadHandle thread, std::string_view name) noexcept {
  std::array<char, 16> text{};
  std::size_t length = std::min(name.size(), text.size() - 1);
  // A byte that continues a character may not be the first one that is cut off.
  while (length > 0 && length < name.size() && (name[length] & 0xC0) == 0x80) --length;
  name.copy(text.data(), length);
  pthread_setname_np(thread, text.data());
}

bool startThread(std::size_t stackBytes, void (*function)(void*), void* argument) noexcept {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  if (stackBytes) setStackSize(attributes, stackBytes);
  auto* const start = new Start{function, argument};
  pthread_t thread;
  const bool isStarted = pthread_create(&thread, &attributes, &runStart, start) == 0;
  if (!isStarted) delete start;
  pthread_attr_destroy(&attributes);
  return isStarted;
}

}  // namespace zeb
