#include <ZEBPlatform/Linux/detail/Folder.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string_view>

namespace zeb {

namespace {

constexpr int maxReadings = 3;

class Descriptor {
 public:
  explicit Descriptor(int number) noexcept : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  int number() const noexcept { return number_; }

 private:
  const int number_;
};

int lookAt(int descriptor, FileState& state) {
  struct stat facts;
  if (fstat(descriptor, &facts) < 0) return errno;
  state = {facts.st_dev, facts.st_ino, facts.st_size, facts.st_mtim.tv_sec, facts.st_mtim.tv_nsec};
  if (S_ISDIR(facts.st_mode)) return EISDIR;
  return S_ISREG(facts.st_mode) ? 0 : EINVAL;
}

/// Reads up to the end of the file, also if its size changes meanwhile.
int readAll(int descriptor, std::size_t expectedSize, std::size_t maxSize, std::string& content) {
  std::size_t filled = 0;
  // One byte more than the file has, so that most files need no second call to find the end.
  content.resize(expectedSize + 1);
  for (;;) {
    const ssize_t count = pread(descriptor, content.data() + filled, content.size() - filled,
                                static_cast<off_t>(filled));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    filled += static_cast<std::size_t>(count);
    if (filled > maxSize) return EFBIG;
    if (count == 0 || filled < content.size()) break;
    content.resize(content.size() + 65536);
  }
  content.resize(filled);
  return 0;
}

}  // namespace

Folder::~Folder() {
  if (descriptor_ >= 0) close(descriptor_);
}

int Folder::open(const std::string& path) {
  descriptor_ = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  return descriptor_ < 0 ? errno : 0;
}

int Folder::appendNames(std::vector<std::string>& names) const {
  // The stream closes the descriptor that it is made of.
  const int copy = openat(descriptor_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (copy < 0) return errno;
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(fdopendir(copy), closedir);
  if (!stream) {
    const int failure = errno;
    close(copy);
    return failure;
  }
  for (;;) {
    errno = 0;
    const dirent* entry = readdir(stream.get());
    if (!entry) return errno;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
}

int Folder::readFile(const std::string& name, std::size_t maxSize, std::string& content,
                     FileState& state) const {
  const Descriptor file(
      openat(descriptor_, name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY));
  if (file.number() < 0) return errno;
  if (const int failure = lookAt(file.number(), state)) return failure;
  for (int readings = 1;; ++readings) {
    const auto size = static_cast<std::size_t>(state.size);
    if (size > maxSize) return EFBIG;
    if (const int failure = readAll(file.number(), size, maxSize, content)) return failure;
    const FileState before = state;
    if (const int failure = lookAt(file.number(), state)) return failure;
    if (state == before || readings == maxReadings) return 0;
  }
}

FolderAccess folderAccess(const std::string& path) {
  struct stat facts;
  if (stat(path.c_str(), &facts) < 0) {
    return errno == ENOENT ? FolderAccess::missing : FolderAccess::unreadable;
  }
  if (!S_ISDIR(facts.st_mode)) return FolderAccess::unreadable;
  if (facts.st_uid != 0 && facts.st_uid != geteuid()) return FolderAccess::foreign;
  return faccessat(AT_FDCWD, path.c_str(), R_OK | X_OK, AT_EACCESS) == 0 ? FolderAccess::readable
                                                                         : FolderAccess::unreadable;
}

}  // namespace zeb
