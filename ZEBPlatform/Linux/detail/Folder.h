#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zeb {

/// Which file a name stood for, and when that file was changed last. Two equal states mean that
/// nothing was changed in between, as far as the file system's clock can tell.
struct FileState {
  std::uint64_t device = 0;
  std::uint64_t number = 0;
  std::int64_t size = 0;
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;

  bool operator==(const FileState&) const noexcept = default;
};

/// A folder that is open for reading its files. The functions return 0 or the error number. One
/// thread at a time.
class Folder {
 public:
  Folder() = default;
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder();

  /// ENOTDIR if there is something else at the path. A link to a folder is followed. Called once.
  int open(const std::string& path);

  /// Appends the names of all entries except "." and "..", in no order.
  int appendNames(std::vector<std::string>& names) const;

  /// Reads the regular file of this name into `content`. Never follows a link (ELOOP) and never
  /// waits for a pipe or a device (EINVAL); EISDIR for a folder, EFBIG for a file of more than
  /// `maxSize` bytes. A file that changes meanwhile is read again a few times. `state` is what the
  /// file was before it was read, also after a failure if there was a file to look at. `content` is
  /// unspecified after a failure; its memory is used again.
  int readFile(const std::string& name, std::size_t maxSize, std::string& content,
               FileState& state) const;

 private:
  int descriptor_ = -1;
};

/// Whether a program may use the folder as its user's own.
enum class FolderAccess : std::uint8_t {
  missing,
  /// It belongs to another user than root and the process's own one.
  foreign,
  /// It is no folder, or its permissions exclude the process.
  unreadable,
  readable,
};

FolderAccess folderAccess(const std::string& path);

}  // namespace zeb
