#include <ZEBPlatform/Linux/detail/FileReading.h>
#include <ZEBPlatform/Linux/detail/RegularFile.h>

#include <algorithm>
#include <cerrno>
#include <span>
#include <system_error>

namespace zeb {

int readWholeFile(const std::string& path, std::size_t maxSize, std::string& content) {
  content.clear();
  RegularFile file;
  const int failure = file.open(path);
  return failure ? failure : readToEnd(file, maxSize, content);
}

int readToEnd(RegularFile& file, std::size_t maxSize, std::string& content) {
  content.clear();
  int failure = 0;
  // Reads to the end of the file, also if its length changes meanwhile.
  for (std::size_t count = 1; !failure && count > 0;) {
    const std::size_t filled = content.size();
    content.resize(std::min(maxSize, filled + 65535) + 1);
    failure = file.read(std::as_writable_bytes(std::span(content)).subspan(filled), count);
    content.resize(filled + (failure ? 0 : count));
    if (content.size() > maxSize) failure = EFBIG;
  }
  if (failure) content.clear();
  return failure;
}

std::string textOfErrorNumber(int number) { return std::generic_category().message(number); }

}  // namespace zeb
