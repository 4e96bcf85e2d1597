#include <ZEBPlatform/Linux/detail/RegularFile.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace zeb {

RegularFile::~RegularFile() {
  if (descriptor_ >= 0) close(descriptor_);
}

int RegularFile::open(const std::string& path) {
  return accept(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
}

int RegularFile::openBelow(const std::string& folder, std::span<const std::string> entries) {
  if (entries.empty()) return EISDIR;
  int parent = ::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  for (; parent >= 0 && entries.size() > 1; entries = entries.subspan(1)) {
    const int next =
        openat(parent, entries[0].c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    const int failure = errno;
    close(parent);
    errno = failure;
    parent = next;
  }
  if (parent < 0) return errno;
  const int flags = O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
  const int failure = accept(openat(parent, entries[0].c_str(), flags));
  close(parent);
  return failure;
}

int RegularFile::accept(int descriptor) {
  descriptor_ = descriptor;
  struct stat facts;
  if (descriptor_ < 0 || fstat(descriptor_, &facts) < 0) return errno;
  if (S_ISDIR(facts.st_mode)) return EISDIR;
  if (!S_ISREG(facts.st_mode)) return EINVAL;
  size_ = static_cast<std::size_t>(facts.st_size);
  return 0;
}

int RegularFile::read(std::span<std::byte> room, std::size_t& count) {
  ssize_t got;
  do {
    got = ::read(descriptor_, room.data(), room.size());
  } while (got < 0 && errno == EINTR);
  if (got < 0) return errno;
  count = static_cast<std::size_t>(got);
  return 0;
}

int RegularFile::map(std::span<const std::byte>& bytes) {
  void* address = mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, descriptor_, 0);
  if (address == MAP_FAILED) return errno;
  bytes = {static_cast<const std::byte*>(address), size_};
  return 0;
}

void RegularFile::unmap(std::span<const std::byte> bytes) noexcept {
  munmap(const_cast<std::byte*>(bytes.data()), bytes.size());
}

}  // namespace zeb
