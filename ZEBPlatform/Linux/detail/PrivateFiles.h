#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace zeb {

// Folders and files that belong to one user. The functions return 0 or the error number, and EPERM
// if other users could do what they must not be able to do. Any thread.

/// The folder for the user's data: XDG_DATA_HOME if it is an absolute path, else .local/share in
/// the home folder, which is HOME or what the system's list of users says. A program with raised
/// privileges ignores the variables. Empty if there is no home folder. Must not run while another
/// thread changes the environment.
std::string userDataFolder();

/// Makes the folder and its missing parents for the user alone (mode 0700), unless it exists, and
/// gives its path without links, "." and "..". EPERM if a folder that exists belongs to a user
/// other than root and the process's user, or can be changed by its group or by others.
int makePrivateFolder(const std::string& path, std::string& canonicalPath);

enum class Protection : std::uint8_t {
  fromChanges,  ///< only root and the process's user may write
  fromReading,  ///< only the process's user may read or write, and owns the file
};

/// Reads the beginning of a regular file into `room`; `count` is less than its size only if the
/// file is shorter. ELOOP if the last part of the path is a link, EINVAL if it is no regular file,
/// EPERM if the file lacks the protection.
int readProtectedFile(const std::string& path, Protection protection, std::span<std::byte> room,
                      std::size_t& count);

/// Makes a file for the user alone (mode 0600), complete or not at all. EEXIST if there is one.
int writeNewFile(const std::string& path, std::span<const std::byte> content);

/// Whether the process may add files to the folder.
bool isFolderWritable(const std::string& path) noexcept;

/// Tells files apart, whatever their names, as long as they exist.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t number = 0;
  bool operator==(const FileIdentity&) const = default;
};
/// Does not open the file.
int identifyFile(const std::string& path, FileIdentity& identity);

}  // namespace zeb
