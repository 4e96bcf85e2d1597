#pragma once

#include <ZEBPlatform/Foundation/NSData.h>

#include <string>

namespace zeb::timeline {

/// The content of a regular file. Throws NSError if it is not a regular file, is larger than 1 GiB
/// or can't be read.
NSData contentsOfFile(const std::string& path);

/// A new directory below the temporary one, which only its owner can use. This object removes it
/// with everything in it unless `keep()` was called. Throws std::exception if it can't be made.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::string& path() const noexcept { return path_; }
  void keep() noexcept { isKept_ = true; }

 private:
  std::string path_;
  bool isKept_ = false;
};

/// A file in a temporary directory of its own. It is written completely or not at all, and removed
/// with the directory. Throws std::exception if the file can't be written.
class TemporaryFile {
 public:
  explicit TemporaryFile(const NSData& data);

  std::string path() const { return directory_.path() + "/timeline.archive"; }
  void keep() noexcept { directory_.keep(); }

 private:
  TemporaryDirectory directory_;
};

}  // namespace zeb::timeline
