#include <ZEBPlatform/Linux/detail/FolderWatch.h>

#include <limits.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>

namespace zeb {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds quietTime{100};
constexpr milliseconds maxDelay{1000};
/// How often the search begins anew because folders are made while it looks for them.
constexpr int maxSearches = 100;

/// IN_ATTRIB tells of permissions, of the watched folder's own ones, too.
constexpr std::uint32_t entryEvents =
    IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB;
constexpr std::uint32_t ownEvents = IN_DELETE_SELF | IN_MOVE_SELF;
constexpr std::uint32_t endEvents = ownEvents | IN_UNMOUNT | IN_IGNORED;

/// Does not replace what the same folder is watched for already.
int addWatch(int descriptor, const std::string& path, std::uint32_t events) noexcept {
  return inotify_add_watch(descriptor, path.c_str(), events | ownEvents | IN_ONLYDIR | IN_MASK_ADD);
}

bool isMissing(int failure) noexcept {
  return failure == ENOENT || failure == ENOTDIR || failure == EACCES || failure == ELOOP;
}

}  // namespace

FolderWatch::FolderWatch(std::string path, bool (*isWanted)(std::string_view name))
    : path_(std::move(path)), isWanted_(isWanted), descriptor_(inotify_init1(IN_CLOEXEC)) {
  if (descriptor_ >= 0 && (stopping_.descriptor() < 0 || !watchAgain())) {
    close(descriptor_);
    descriptor_ = -1;
  }
}

FolderWatch::~FolderWatch() {
  if (descriptor_ >= 0) close(descriptor_);
}

/// Replaces all watches. The folders above come first, so that a folder that is made meanwhile is
/// an event.
bool FolderWatch::watchAgain() {
  if (folder_ >= 0) inotify_rm_watch(descriptor_, folder_);
  for (const auto& [watch, name] : above_) inotify_rm_watch(descriptor_, watch);
  above_.clear();
  if (!watchNearestFolderAbove(path_)) return false;
  std::error_code failure;
  const fs::path real = fs::weakly_canonical(path_, failure);
  if (!failure && real != path_ && !watchNearestFolderAbove(real.string())) return false;
  folder_ = addWatch(descriptor_, path_, entryEvents | IN_CLOSE_WRITE);
  return folder_ >= 0 || isMissing(errno);
}

bool FolderWatch::watchNearestFolderAbove(const std::string& path) {
  for (int searches = 0; searches < maxSearches; ++searches) {
    fs::path folder = path;
    int watch = -1;
    std::string name;
    while (watch < 0 && folder.has_relative_path()) {
      name = folder.filename().string();
      folder = folder.parent_path();
      watch = addWatch(descriptor_, folder.string(), entryEvents);
      if (watch < 0 && !isMissing(errno)) return false;
    }
    if (watch < 0) return false;
    // A watch that is older than this search misses no change, so the search ends. This is also the
    // case if the next folder exists but cannot be read.
    if (std::ranges::find(above_, std::pair(watch, name)) != above_.end()) return true;
    above_.emplace_back(watch, name);
    // If the next folder has been made before this one was watched, it is the nearest one.
    struct stat facts;
    const fs::path next = folder / name;
    if (next == path || stat(next.c_str(), &facts) != 0 || !S_ISDIR(facts.st_mode)) return true;
  }
  return true;
}

FolderWatch::Readable FolderWatch::poll(int milliseconds) const noexcept {
  pollfd descriptors[] = {{.fd = descriptor_, .events = POLLIN, .revents = 0},
                          {.fd = stopping_.descriptor(), .events = POLLIN, .revents = 0}};
  int count;
  do {
    count = ::poll(descriptors, 2, milliseconds);
  } while (count < 0 && errno == EINTR);
  if (descriptors[1].revents != 0) return Readable::stop;
  return count > 0 ? Readable::events : Readable::nothing;
}

bool FolderWatch::readEvents(bool& isLost) {
  alignas(inotify_event) char buffer[16 * (sizeof(inotify_event) + NAME_MAX + 1)];
  const ssize_t size = read(descriptor_, buffer, sizeof buffer);
  bool isChanged = false;
  for (const char* place = buffer; place < buffer + size;) {
    const auto& event = *reinterpret_cast<const inotify_event*>(place);
    place += sizeof(inotify_event) + event.len;
    const std::string_view name = event.len > 0 ? event.name : "";
    const bool isOwn = event.len == 0;  // of the watched folder itself, not of an entry
    const auto isAwaited = [&](const auto& entry) {
      return entry.first == event.wd && (isOwn || entry.second == name);
    };
    if (event.mask & IN_Q_OVERFLOW || std::ranges::any_of(above_, isAwaited) ||
        (event.wd == folder_ && event.mask & endEvents)) {
      isLost = isChanged = true;
    } else if (event.wd == folder_ && (isOwn || isWanted_(name))) {
      isChanged = true;
    }
  }
  return isChanged;
}

FolderEvent FolderWatch::wait() {
  Clock::time_point deadline;
  for (bool isChanged = false;;) {
    int timeout = -1;
    if (isChanged) {
      const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
      timeout = static_cast<int>(std::clamp(left, milliseconds(0), quietTime).count());
    }
    const Readable readable = poll(timeout);
    if (readable == Readable::stop) return FolderEvent::stopped;
    if (readable == Readable::nothing) return FolderEvent::changed;
    bool isLost = false;
    const bool isChangedNow = readEvents(isLost);
    if (isLost && !watchAgain()) return FolderEvent::failed;
    if (isChanged && Clock::now() >= deadline) return FolderEvent::changed;
    if (isChangedNow && !isChanged) {
      isChanged = true;
      deadline = Clock::now() + maxDelay;
    }
  }
}

}  // namespace zeb
