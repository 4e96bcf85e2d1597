#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace zeb {

/// A regular file that is open for reading. The functions return 0 or the error number. One thread
/// at a time.
class RegularFile {
 public:
  RegularFile() = default;
  RegularFile(const RegularFile&) = delete;
  RegularFile& operator=(const RegularFile&) = delete;
  ~RegularFile();

  /// EISDIR for a directory, EINVAL for anything else that is not a regular file. Never waits for a
  /// pipe or a device. Called once.
  int open(const std::string& path);
  /// The same for a file below `folder`, which is reached through these entries and through no
  /// link (ENOTDIR or ELOOP). None of the entries is empty, ".", ".." or contains "/".
  int openBelow(const std::string& folder, std::span<const std::string> entries);
  /// The size when the file was opened. It may change, and files of the kernel state 0.
  std::size_t size() const noexcept { return size_; }
  /// Reads the next bytes; `count` is 0 only at the end of the file, or if `room` is empty.
  int read(std::span<std::byte> room, std::size_t& count);
  /// Maps all bytes, which must be more than none. They stay valid after the file is closed, until
  /// `unmap`. If another process shortens the file, reading the missing bytes raises SIGBUS.
  int map(std::span<const std::byte>& bytes);
  static void unmap(std::span<const std::byte> bytes) noexcept;

 private:
  int accept(int descriptor);

  int descriptor_ = -1;
  std::size_t size_ = 0;
};

}  // namespace zeb
