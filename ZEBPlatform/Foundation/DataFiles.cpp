#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/detail/DataBuilder.h>
#include <ZEBPlatform/Linux/detail/FileReading.h>
#include <ZEBPlatform/Linux/detail/FileWriter.h>
#include <ZEBPlatform/Linux/detail/RegularFile.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <string>

namespace zeb {

namespace {

/// Smaller files are copied: a mapping costs more than that and takes a whole page.
constexpr std::size_t minMappedSize = 16384;
/// Room for reading beyond the size that the file states.
constexpr std::size_t minRoom = 4096;

/// Answers whether nothing failed; otherwise fills the error.
bool succeeded(int failure, const NSString& path, const char* task, NSError* error) {
  if (!failure) return true;
  if (!error) return false;
  const NSString description = NSString::stringWithFormat("The file \"%@\" could not be %s: %s.",
                                                          path, task, textOfErrorNumber(failure));
  *error =
      NSError(NSPOSIXErrorDomain, failure,
              {{NSLocalizedDescriptionKey, description}, {NSFilePathErrorKey, path ? path : ""}});
  return false;
}

/// The path as the system takes it; empty, which names no file, if it contains a zero.
std::string systemPath(const NSString& path) {
  std::string bytes = path.utf8();
  if (bytes.find('\0') != std::string::npos) bytes.clear();
  return bytes;
}

int readToTheEnd(RegularFile& file, std::size_t maxLength, detail::DataBuilder& builder) {
  // One byte more than the file states, so that a second reading finds the end without more room.
  builder.require(std::max(minRoom, file.size() + 1));
  for (;;) {
    if (builder.room().empty()) builder.require(minRoom);
    const std::span<std::byte> room = builder.room();
    std::size_t count = 0;
    const int failure = file.read(room, count);
    if (failure || count == 0) return failure;
    builder.setCursor(builder.cursor() + count);
    if (builder.size() > maxLength) return EFBIG;
  }
}

/// Answers whether the file could be mapped; some file systems cannot do that.
bool mapFile(RegularFile& file, NSData& data) {
  std::span<const std::byte> bytes;
  if (file.map(bytes) != 0) return false;
  try {
    data = NSData::dataWithBytesNoCopy(bytes, [bytes] { RegularFile::unmap(bytes); });
  } catch (const std::bad_alloc&) {
    RegularFile::unmap(bytes);
    throw;
  }
  return true;
}

int readFile(const std::string& path, std::uint64_t options, std::size_t maxLength, NSData& data) {
  RegularFile file;
  if (const int failure = file.open(path)) return failure;
  if (file.size() > maxLength) return EFBIG;
  const bool isWantedMapped = options & NSDataReadingMappedIfSafe && file.size() >= minMappedSize;
  if (isWantedMapped && mapFile(file, data)) return 0;
  detail::DataBuilder builder;
  const int failure = readToTheEnd(file, maxLength, builder);
  if (!failure) data = builder.finish();
  return failure;
}

int writeFile(const NSData& data, const std::string& path, std::uint64_t options) {
  const auto way =
      options & NSDataWritingAtomic ? FileWriter::Way::atomic : FileWriter::Way::inPlace;
  const auto existing = options & NSDataWritingWithoutOverwriting ? FileWriter::Existing::refuse
                                                                  : FileWriter::Existing::replace;
  FileWriter writer;
  int failure = writer.open(path, way, existing);
  if (failure) return failure;
  data.enumerateByteRanges([&](std::span<const std::byte> bytes, NSRange) {
    failure = writer.write(bytes);
    return failure == 0;
  });
  return failure ? failure : writer.commit();
}

/// The result of the task, or ENOMEM if there is no memory for it.
template <class Task>
int withoutBadAlloc(const Task& task) {
  try {
    return task();
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
}

}  // namespace

NSData NSData::dataWithContentsOfFile(const NSString& path, std::uint64_t options,
                                      std::size_t maxLength, NSError* error) {
  NSData data;
  const int failure =
      withoutBadAlloc([&] { return readFile(systemPath(path), options, maxLength, data); });
  return succeeded(failure, path, "read", error) ? data : nullptr;
}

bool NSData::writeToFile(const NSString& path, std::uint64_t options, NSError* error) const {
  if (isNil()) return succeeded(EINVAL, path, "written", error);
  const int failure = withoutBadAlloc([&] { return writeFile(*this, systemPath(path), options); });
  return succeeded(failure, path, "written", error);
}

}  // namespace zeb
