#pragma once

#include <cstddef>
#include <string>

namespace zeb {

class RegularFile;

/// Reads a whole regular file into `content`. Returns 0 or the error number: EFBIG if the file has
/// more than `maxSize` bytes, else as `RegularFile`. `content` is empty after a failure. Any
/// thread.
int readWholeFile(const std::string& path, std::size_t maxSize, std::string& content);
/// The same for the rest of a file that is open.
int readToEnd(RegularFile& file, std::size_t maxSize, std::string& content);

/// The system's text for an error number.
std::string textOfErrorNumber(int number);

}  // namespace zeb
