#include "Files.h"

#include <ZEBPlatform/Foundation/NSError.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace zeb::timeline {

namespace {

constexpr std::size_t maxFileSize = std::size_t{1} << 30;

}  // namespace

NSData contentsOfFile(const std::string& path) {
  NSError error;
  const NSData data = NSData::dataWithContentsOfFile(path, 0, maxFileSize, &error);
  if (data.isNil()) throw error;
  return data;
}

TemporaryDirectory::TemporaryDirectory()
    : path_(std::filesystem::temp_directory_path() / "timeline-XXXXXX") {
  if (!::mkdtemp(path_.data())) {
    throw std::system_error(errno, std::generic_category(), path_);
  }
}

TemporaryDirectory::~TemporaryDirectory() {
  if (isKept_) return;
  std::error_code ignored;  // a file that stays in the temporary directory does no harm
  std::filesystem::remove_all(path_, ignored);
}

TemporaryFile::TemporaryFile(const NSData& data) {
  NSError error;
  if (!data.writeToFile(path(), NSDataWritingAtomic, &error)) throw error;
}

}  // namespace zeb::timeline
