#include <ZEBPlatform/Linux/detail/FileReading.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace zeb {

namespace {

/// Reads to the end of the file, also if its length changes meanwhile.
int readToTheEnd(int descriptor, std::size_t maxSize, std::string& content) {
  for (;;) {
    const std::size_t filled = content.size();
    content.resize(std::min(maxSize + 1, filled + 65536));
    const ssize_t got = read(descriptor, content.data() + filled, content.size() - filled);
    content.resize(filled + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    if (got == 0) return 0;
    if (got < 0 && errno != EINTR) return errno;
    if (content.size() > maxSize) return EFBIG;
  }
}

}  // namespace

int readWholeFile(const std::string& path, std::size_t maxSize, std::string& content) {
  content.clear();
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return errno;
  struct stat facts;
  int failure = fstat(descriptor, &facts) < 0 ? errno : 0;
  if (!failure && !S_ISREG(facts.st_mode)) failure = EINVAL;
  if (!failure) failure = readToTheEnd(descriptor, maxSize, content);
  close(descriptor);
  if (failure) content.clear();
  return failure;
}

std::string textOfErrorNumber(int number) { return std::generic_category().message(number); }

}  // namespace zeb
