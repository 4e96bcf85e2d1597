#pragma once

#include <ZEBPlatform/Foundation/NSData.h>

#include <string>

namespace zeb::timeline {

/// All of a regular file. Throws std::exception with a text for people: what is no regular file, is
/// larger than 1 GiB or can't be read is refused.
NSData contentsOfFile(const std::string& path);

/// A file for its owner alone, in a new directory below the temporary one, that appears whole or not at
/// all and goes with this object unless kept. Throws std::exception when the file can't be written.
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
