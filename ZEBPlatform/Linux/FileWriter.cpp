#include <ZEBPlatform/Linux/detail/FileWriter.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

namespace zeb {

namespace {

constexpr mode_t newFileMode = 0600;
constexpr mode_t permissionBits = 0777;
constexpr auto keepOwner = static_cast<uid_t>(-1);

int errorIf(bool hasFailed) noexcept { return hasFailed ? errno : 0; }

/// The folder part of a path, with the slash; empty for a file in the current folder.
std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

}  // namespace

FileWriter::~FileWriter() {
  if (descriptor_ >= 0) close(descriptor_);
  if (!temporaryPath_.empty()) unlink(temporaryPath_.c_str());
}

int FileWriter::open(const std::string& path, Way way, Existing existing) {
  path_ = path;
  existing_ = existing;
  return way == Way::atomic ? openTemporary() : openInPlace();
}

int FileWriter::openInPlace() {
  // A pipe without a reader is an error (ENXIO) and no reason to wait. The file is cut only at the
  // end, because the data may be a mapping of it.
  const int ifExisting = existing_ == Existing::refuse ? O_EXCL : 0;
  descriptor_ =
      ::open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | ifExisting,
             newFileMode);
  if (descriptor_ < 0) return errno;
  return errorIf(fcntl(descriptor_, F_SETFL, 0) < 0);
}

int FileWriter::openTemporary() {
  if (path_.empty()) return ENOENT;
  struct stat facts;
  const bool isThere = lstat(path_.c_str(), &facts) == 0;
  if (!isThere && errno != ENOENT) return errno;
  if (isThere && existing_ == Existing::refuse) return EEXIST;
  if (isThere && S_ISLNK(facts.st_mode)) {
    const std::unique_ptr<char, decltype(&std::free)> target(realpath(path_.c_str(), nullptr),
                                                             &std::free);
    if (!target) return errno;
    path_ = target.get();
  }
  temporaryPath_ = folderOf(path_) + ".zeb-XXXXXX";
  descriptor_ = mkostemp(temporaryPath_.data(), O_CLOEXEC);
  if (descriptor_ < 0) {
    temporaryPath_.clear();
    return errno;
  }
  return isThere ? keepModeAndOwner() : 0;
}

int FileWriter::keepModeAndOwner() {
  struct stat facts;
  if (stat(path_.c_str(), &facts) < 0) return errno;
  if (S_ISDIR(facts.st_mode)) return EISDIR;
  if (!S_ISREG(facts.st_mode)) return EINVAL;
  // The owner comes first, because a change of it may clear bits of the mode. Only root may give
  // files away; for everybody else the new file is their own. If not even the group can be kept,
  // the rights of the old group must not go to another one.
  const bool hasGroup = fchown(descriptor_, facts.st_uid, facts.st_gid) == 0 ||
                        fchown(descriptor_, keepOwner, facts.st_gid) == 0;
  const mode_t mode =
      facts.st_mode & (hasGroup ? permissionBits : permissionBits & ~mode_t{S_IRWXG});
  return errorIf(fchmod(descriptor_, mode) < 0);
}

int FileWriter::write(std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return written < 0 ? errno : EIO;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
    size_ += static_cast<std::uint64_t>(written);
  }
  return 0;
}

int FileWriter::commit() {
  const bool isAtomic = !temporaryPath_.empty();
  if (const int failure = isAtomic ? errorIf(fsync(descriptor_) < 0) : cut()) return failure;
  // The descriptor is closed even if a signal interrupts that.
  const bool hasFailed = close(std::exchange(descriptor_, -1)) < 0 && errno != EINTR;
  if (hasFailed || !isAtomic) return errorIf(hasFailed);
  return replaceTarget();
}

/// Removes what the file had beyond the written bytes.
int FileWriter::cut() {
  struct stat facts;
  if (fstat(descriptor_, &facts) < 0) return errno;
  if (!S_ISREG(facts.st_mode)) return 0;
  return errorIf(ftruncate(descriptor_, static_cast<off_t>(size_)) < 0);
}

int FileWriter::replaceTarget() {
  const char* const from = temporaryPath_.c_str();
  const char* const to = path_.c_str();
  if (existing_ == Existing::replace) {
    if (rename(from, to) < 0) return errno;
    temporaryPath_.clear();
  } else if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) {
    temporaryPath_.clear();
  } else if (errno != EINVAL || link(from, to) < 0) {
    // Some file systems cannot rename in that way, but a second name does the same: the destructor
    // then removes the first one.
    return errno;
  }
  return syncFolder(folderOf(path_) + ".");
}

int syncFolder(const std::string& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return errno == EACCES ? 0 : errno;
  const bool hasFailed = fsync(descriptor) < 0 && errno != EINVAL;
  const int failure = errorIf(hasFailed);
  close(descriptor);
  return failure;
}

}  // namespace zeb
