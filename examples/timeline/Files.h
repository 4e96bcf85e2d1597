#pragma once

#include <ZEBPlatform/Foundation/NSData.h>

#include <string>

namespace zeb::timeline {

/// The content of a regular file. Throws NSError if it is not a regular file, is larger than 1 GiB
/// or can't be read.
NSData contentsOfFile(const std::string& path);

/// A file that only its owner can read, in a new directory below the temporary one. It is written
/// completely or not at all, and this object removes it unless `keep()` was called. Throws
/// std::exception if the file can't be written.
class TemporaryFile {
 public:
  explicit TemporaryFile(const NSData& data);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  std::string path() const { return directory_ + "/timeline.archive"; }
  void keep() noexcept { isKept_ = true; }

 private:
  void remove() noexcept;

  std::string directory_;
  bool isKept_ = false;
};

}  // namespace zeb::timeline
