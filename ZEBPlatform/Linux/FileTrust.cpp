#include <ZEBPlatform/Linux/detail/FileReading.h>
#include <ZEBPlatform/Linux/detail/FileTrust.h>
#include <ZEBPlatform/Linux/detail/ProcessFacts.h>

#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace zeb {

namespace {

bool isOwnerTrusted(uid_t owner) noexcept {
  // A process with raised privileges must not run code that its unprivileged user could change.
  return owner == 0 || (owner == geteuid() && !hasRaisedPrivileges());
}

bool isWritableByStrangers(const struct stat& facts) noexcept {
  if (!S_ISDIR(facts.st_mode)) return facts.st_mode & (S_IWGRP | S_IWOTH);
  if (facts.st_mode & S_ISVTX) return false;
  const bool isOwnersGroup = facts.st_gid == 0 || facts.st_gid == facts.st_uid;
  return facts.st_mode & S_IWOTH || (facts.st_mode & S_IWGRP && !isOwnersGroup);
}

bool isFolderAbove(std::string folder, const std::string& file) {
  if (!folder.ends_with('/')) folder += '/';
  return file.starts_with(folder);
}

}  // namespace

bool hasRaisedPrivileges() noexcept { return getauxval(AT_SECURE) != 0; }

std::string reasonToDistrust(const std::string& path) {
  const std::string program = hasRaisedPrivileges() ? std::string() : executablePath();
  struct stat facts;
  for (std::filesystem::path place = path;; place = place.parent_path()) {
    const std::string name = place.string();
    if (isFolderAbove(name, program)) return {};
    if (lstat(name.c_str(), &facts) != 0) return name + ": " + textOfErrorNumber(errno);
    if (name == path && !S_ISREG(facts.st_mode)) return name + " is no regular file";
    if (!isOwnerTrusted(facts.st_uid)) return name + " belongs to another user";
    if (isWritableByStrangers(facts)) {
      return name + " can be changed by other users; take their permission away (chmod go-w)";
    }
    if (place == place.root_path()) return {};
  }
}

}  // namespace zeb
