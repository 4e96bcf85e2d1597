#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace zeb {

/// Brings changes of the folder's entries to the disk, as far as the folder's permissions and the
/// file system allow it. Returns 0 or the error number. Any thread.
int syncFolder(const std::string& folder);

/// Writes a file from its beginning to its end. The functions return 0 or the error number; after
/// an error the writer is only destroyed. One thread at a time.
class FileWriter {
 public:
  enum class Way : std::uint8_t {
    /// Overwrites the file itself and then cuts it to the new length. Readers see parts, and a
    /// failure leaves a part.
    inPlace,
    /// Writes a temporary file in the same folder, brings it to the disk and lets it take the place
    /// of the file, which has either the old or the new content at every moment. Keeps the mode of
    /// the replaced file and, as far as the process may, its owner and group (without the group,
    /// the group's rights are dropped); not its hard links, access lists and extended attributes. A
    /// link at the path is followed and must lead to a file. If the process is killed, the
    /// temporary file, whose name begins with ".zeb-", is left over.
    atomic,
  };
  enum class Existing : std::uint8_t { replace, refuse };

  FileWriter() = default;
  FileWriter(const FileWriter&) = delete;
  FileWriter& operator=(const FileWriter&) = delete;
  /// Removes the temporary file if it did not take its place.
  ~FileWriter();

  /// A new file belongs to its owner alone (mode 0600). EEXIST if there is a file that must not be
  /// replaced; EISDIR for a directory. Atomic writing needs a regular file (EINVAL). Called once.
  int open(const std::string& path, Way way, Existing existing);
  int write(std::span<const std::byte> bytes);
  /// Ends the writing. If an error is returned after atomic writing, the file has the old content,
  /// or the new one, which may then be lost if the machine fails.
  int commit();

 private:
  int openInPlace();
  int openTemporary();
  int keepModeAndOwner();
  int cut();
  int replaceTarget();

  std::string path_;
  std::string temporaryPath_;  ///< empty if there is no temporary file
  Existing existing_ = Existing::replace;
  int descriptor_ = -1;
  std::uint64_t size_ = 0;  ///< of what was written
};

}  // namespace zeb
