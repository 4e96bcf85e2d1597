#include <ZEBPlatform/Linux/detail/FileWriter.h>
#include <ZEBPlatform/Linux/detail/PrivateFiles.h>

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <vector>

namespace zeb {

namespace {

constexpr mode_t folderMode = 0700;
constexpr mode_t rightsOfOthers = S_IRWXG | S_IRWXO;
constexpr mode_t writingOfOthers = S_IWGRP | S_IWOTH;

/// The variable's absolute path; empty without one.
std::string absolutePathOf(const char* variable) {
  const char* const value = secure_getenv(variable);
  return value && value[0] == '/' ? value : "";
}

std::string homeFolder() {
  std::string home = absolutePathOf("HOME");
  if (!home.empty()) return home;
  std::vector<char> room(1024);
  passwd entry;
  passwd* found = nullptr;
  while (getpwuid_r(geteuid(), &entry, room.data(), room.size(), &found) == ERANGE) {
    room.resize(room.size() * 2);
  }
  return found && found->pw_dir && found->pw_dir[0] == '/' ? found->pw_dir : "";
}

/// Makes one folder whose parent exists.
int makeFolder(const std::filesystem::path& path) {
  if (mkdir(path.c_str(), folderMode) == 0) {
    // The folder can be used even if the disk does not know it yet.
    (void)syncFolder(path.parent_path());
    return 0;
  }
  return errno == EEXIST ? 0 : errno;
}

int protectionFault(const struct stat& facts, Protection protection) noexcept {
  const bool isPrivate = protection == Protection::fromReading;
  const bool isOwned = facts.st_uid == geteuid() || (facts.st_uid == 0 && !isPrivate);
  const mode_t forbidden = isPrivate ? rightsOfOthers : writingOfOthers;
  return isOwned && !(facts.st_mode & forbidden) ? 0 : EPERM;
}

}  // namespace

std::string userDataFolder() {
  std::string folder = absolutePathOf("XDG_DATA_HOME");
  if (!folder.empty()) return folder;
  const std::string home = homeFolder();
  return home.empty() ? home : home + "/.local/share";
}

int makePrivateFolder(const std::string& path, std::string& canonicalPath) {
  std::error_code problem;
  const std::filesystem::path whole = std::filesystem::absolute(path, problem);
  if (problem) return problem.value();
  std::filesystem::path folder;
  int failure = 0;
  for (const std::filesystem::path& part : whole) {
    folder /= part;
    failure = makeFolder(folder);
  }
  const std::unique_ptr<char, decltype(&std::free)> canonical(realpath(whole.c_str(), nullptr),
                                                              &std::free);
  // An error of a parent, which may be read-only, does no harm if the folder exists.
  struct stat facts;
  if (!canonical) return failure ? failure : errno;
  canonicalPath = canonical.get();
  if (stat(canonical.get(), &facts) < 0) return errno;
  if (!S_ISDIR(facts.st_mode)) return ENOTDIR;
  return protectionFault(facts, Protection::fromChanges);
}

int readProtectedFile(const std::string& path, Protection protection, std::span<std::byte> room,
                      std::size_t& count) {
  const int descriptor =
      open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW);
  if (descriptor < 0) return errno;
  struct stat facts;
  int failure = 0;
  if (fstat(descriptor, &facts) < 0) {
    failure = errno;
  } else if (!S_ISREG(facts.st_mode)) {
    failure = EINVAL;
  } else {
    failure = protectionFault(facts, protection);
  }
  count = 0;
  while (!failure && count < room.size()) {
    const ssize_t got = read(descriptor, room.data() + count, room.size() - count);
    if (got < 0 && errno != EINTR) failure = errno;
    if (got == 0) break;
    if (got > 0) count += static_cast<std::size_t>(got);
  }
  close(descriptor);
  return failure;
}

int writeNewFile(const std::string& path, std::span<const std::byte> content) {
  FileWriter writer;
  int failure = writer.open(path, FileWriter::Way::atomic, FileWriter::Existing::refuse);
  if (!failure) failure = writer.write(content);
  if (!failure) failure = writer.commit();
  return failure;
}

bool isFolderWritable(const std::string& path) noexcept {
  return faccessat(AT_FDCWD, path.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

int identifyFile(const std::string& path, FileIdentity& identity) {
  struct stat facts;
  if (stat(path.c_str(), &facts) < 0) return errno;
  identity = {facts.st_dev, facts.st_ino};
  return 0;
}

}  // namespace zeb
