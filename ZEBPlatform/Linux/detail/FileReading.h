#pragma once

#include <cstddef>
#include <string>

namespace zeb {

/// Reads a whole regular file into `content`. Answers 0 or the error number: EFBIG if the file has
/// more than `maxSize` bytes, EINVAL if it is not a regular file. Never waits for a pipe or a
/// device. `content` is empty after a failure. Any thread.
int readWholeFile(const std::string& path, std::size_t maxSize, std::string& content);

/// The system's text for an error number.
std::string textOfErrorNumber(int number);

}  // namespace zeb
