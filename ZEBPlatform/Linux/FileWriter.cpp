#include <ZEBPlatform/Linux/detail/FileWriter.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace zeb {

namespace {

constexpr mode_t newFileMode = 0600;
constexpr mode_t permissionBits = 0777;

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
  if (way == Way::atomic) return openTemporary();
  const int ifExisting = existing == Existing::refuse ? O_EXCL : O_TRUNC;
  descriptor_ =
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | ifExisting, newFileMode);
  return errorIf(descriptor_ < 0);
}

int FileWriter::openTemporary() {
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
  // files away; everybody else keeps the new file as its own.
  if (fchown(descriptor_, facts.st_uid, facts.st_gid) < 0 && errno != EPERM) return errno;
  return errorIf(fchmod(descriptor_, facts.st_mode & permissionBits) < 0);
}

int FileWriter::write(std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) return errno;
    if (written > 0) bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return 0;
}

int FileWriter::commit() {
  if (!temporaryPath_.empty() && fsync(descriptor_) < 0) return errno;
  const int failure = errorIf(close(descriptor_) < 0);
  descriptor_ = -1;
  if (failure || temporaryPath_.empty()) return failure;
  return replaceTarget();
}

int FileWriter::replaceTarget() {
  const unsigned int flags = existing_ == Existing::refuse ? RENAME_NOREPLACE : 0;
  if (renameat2(AT_FDCWD, temporaryPath_.c_str(), AT_FDCWD, path_.c_str(), flags) < 0) return errno;
  temporaryPath_.clear();
  return syncFolder();
}

/// Brings the change of the name to the disk.
int FileWriter::syncFolder() const {
  const std::string folder = folderOf(path_) + ".";
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return errno;
  const int failure = errorIf(fsync(descriptor) < 0);
  close(descriptor);
  return failure;
}

}  // namespace zeb
