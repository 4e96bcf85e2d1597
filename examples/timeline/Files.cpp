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

TemporaryFile::TemporaryFile(const NSData& data)
    : directory_(std::filesystem::temp_directory_path() / "timeline-XXXXXX") {
  if (!::mkdtemp(directory_.data())) {
    throw std::system_error(errno, std::generic_category(), directory_);
  }
  NSError error;
  if (data.writeToFile(path(), NSDataWritingAtomic, &error)) return;
  remove();
  throw error;
}

TemporaryFile::~TemporaryFile() {
  if (!isKept_) remove();
}

void TemporaryFile::remove() noexcept {
  std::error_code ignored;  // a file that stays in the temporary directory does no harm
  std::filesystem::remove_all(directory_, ignored);
}

}  // namespace zeb::timeline
