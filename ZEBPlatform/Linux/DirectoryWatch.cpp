#include <ZEBPlatform/Linux/detail/DirectoryWatch.h>

#include <limits.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>

namespace zeb {

DirectoryWatch::DirectoryWatch(const std::string& folder) noexcept
    : descriptor_(inotify_init1(IN_CLOEXEC)) {
  constexpr std::uint32_t replacements = IN_CREATE | IN_MOVED_TO | IN_CLOSE_WRITE | IN_ONLYDIR;
  if (descriptor_ >= 0 && inotify_add_watch(descriptor_, folder.c_str(), replacements) < 0) {
    close(descriptor_);
    descriptor_ = -1;
  }
}

DirectoryWatch::~DirectoryWatch() {
  if (descriptor_ >= 0) close(descriptor_);
}

bool DirectoryWatch::waitForEntry(std::string_view name) noexcept {
  alignas(inotify_event) char buffer[8 * (sizeof(inotify_event) + NAME_MAX + 1)];
  for (;;) {
    const ssize_t size = read(descriptor_, buffer, sizeof buffer);
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return false;
    bool isChanged = false;
    for (const char* place = buffer; place < buffer + size;) {
      const auto& event = *reinterpret_cast<const inotify_event*>(place);
      if (event.mask & IN_IGNORED) return false;
      if (event.mask & IN_Q_OVERFLOW || (event.len > 0 && name == event.name)) isChanged = true;
      place += sizeof(inotify_event) + event.len;
    }
    if (isChanged) return true;
  }
}

}  // namespace zeb
