#include "Files.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <system_error>

namespace zeb::timeline {

namespace {

constexpr std::size_t largestFile = std::size_t{1} << 30;

/// Returns the result of a system call, or throws its error.
ssize_t checked(ssize_t result) {
  if (result < 0) throw std::runtime_error(std::generic_category().message(errno));
  return result;
}

[[noreturn]] void refuseSize() { throw std::runtime_error("Larger than 1 GiB"); }

struct OpenFile {
  OpenFile(const std::string& path, int flags, mode_t mode = 0)
      : descriptor(static_cast<int>(checked(::open(path.c_str(), flags | O_CLOEXEC, mode)))) {}
  ~OpenFile() { ::close(descriptor); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  const int descriptor;
};

}  // namespace

NSData contentsOfFile(const std::string& path) {
  // Checked before opening, because opening a pipe would wait for a writer.
  std::error_code code;
  const std::filesystem::file_status status = std::filesystem::status(path, code);
  if (exists(status) && !is_regular_file(status)) throw std::runtime_error("Not a regular file");
  if (std::filesystem::file_size(path, code) > largestFile && !code) refuseSize();

  const OpenFile file(path, O_RDONLY);
  NSMutableData data;
  std::array<std::byte, 65536> chunk;
  while (const auto count = checked(::read(file.descriptor, chunk.data(), chunk.size()))) {
    data.appendBytes(std::span(chunk).first(static_cast<std::size_t>(count)));
    if (data.length() > largestFile) refuseSize();  // it grew, or its size was not known
  }
  return data;
}

TemporaryFile::TemporaryFile(const NSData& data)
    : directory_(std::filesystem::temp_directory_path() / "timeline-XXXXXX") {
  if (!::mkdtemp(directory_.data())) checked(-1);
  try {
    const std::string unfinished = path() + ".unfinished";
    const OpenFile file(unfinished, O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
    for (std::string_view rest = data.view(); !rest.empty();) {
      const ssize_t written = checked(::write(file.descriptor, rest.data(), rest.size()));
      rest.remove_prefix(static_cast<std::size_t>(written));
    }
    std::filesystem::rename(unfinished, path());
  } catch (...) {
    remove();
    throw;
  }
}

TemporaryFile::~TemporaryFile() {
  if (!isKept_) remove();
}

void TemporaryFile::remove() noexcept {
  std::error_code ignored;  // a file that stays in the temporary directory does no harm
  std::filesystem::remove_all(directory_, ignored);
}

}  // namespace zeb::timeline
