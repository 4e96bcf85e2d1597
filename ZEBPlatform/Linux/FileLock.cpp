#include <ZEBPlatform/Linux/detail/FileLock.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace zeb {

namespace {

using Clock = std::chrono::steady_clock;

/// Between two attempts. flock() itself can only wait without a limit.
constexpr std::chrono::milliseconds pause(2);

}  // namespace

FileLock::~FileLock() {
  if (descriptor_ < 0) return;
  // Closing alone would not release a lock whose descriptor a forked child has inherited.
  flock(descriptor_, LOCK_UN);
  close(descriptor_);
}

int FileLock::acquire(const std::string& path, double maxSeconds, Mode mode) {
  descriptor_ = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor_ < 0) return errno;
  const int operation = mode == Mode::shared ? LOCK_SH : LOCK_EX;
  const auto start = Clock::now();
  while (flock(descriptor_, operation | LOCK_NB) != 0) {
    if (errno == EINTR) continue;
    const std::chrono::duration<double> waited = Clock::now() - start;
    if (errno != EWOULDBLOCK || waited.count() >= maxSeconds) return errno;
    std::this_thread::sleep_for(pause);
  }
  return 0;
}

}  // namespace zeb
