#include <ZEBPlatform/Linux/detail/FileLock.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace zeb {

namespace {

/// Between two attempts. flock() itself can only wait without a limit.
constexpr timespec pause = {0, 2'000'000};
constexpr double pauseSeconds = 0.002;

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
  for (double waited = 0;; waited += pauseSeconds) {
    if (flock(descriptor_, operation | LOCK_NB) == 0) return 0;
    if (errno != EINTR && (errno != EWOULDBLOCK || waited >= maxSeconds)) return errno;
    nanosleep(&pause, nullptr);
  }
}

}  // namespace zeb
