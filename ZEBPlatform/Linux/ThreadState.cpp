#include <ZEBPlatform/Linux/detail/ThreadState.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

namespace zeb {

int currentThreadIdentifier() noexcept { return gettid(); }

bool isThreadBlocked(int threadIdentifier) noexcept {
  char path[64];
  std::snprintf(path, sizeof path, "/proc/self/task/%d/stat", threadIdentifier);
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  char text[256];
  const ssize_t length = read(file, text, sizeof text - 1);
  close(file);
  if (length <= 0) return false;
  text[length] = '\0';
  // "number (name) state …", where the name may hold anything.
  const char* const nameEnd = std::strrchr(text, ')');
  return nameEnd && std::strncmp(nameEnd, ") R", 3) != 0;
}

void relaxProcessor() noexcept {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("yield");
#endif
}

}  // namespace zeb
