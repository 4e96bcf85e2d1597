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
  std::size_t expected = file.size();
  for (;;) {
    builder.require(std::max(minRoom, expected - std::min(expected, builder.size())) + 1);
    const std::span<std::byte> room = builder.room();
    std::size_t count = 0;
    const int failure = file.read(room, count);
    if (failure || count == 0) return failure;
    builder.setCursor(builder.cursor() + count);
    if (builder.size() > maxLength) return EFBIG;
  }
}

int readFile(const std::string& path, std::uint64_t options, std::size_t maxLength, NSData& data) {
  RegularFile file;
  if (const int failure = file.open(path)) return failure;
  if (file.size() > maxLength) return EFBIG;
  if (options & NSDataReadingMappedIfSafe && file.size() >= minMappedSize) {
    std::span<const std::byte> bytes;
    if (file.map(bytes) == 0) {
      data = NSData::dataWithBytesNoCopy(bytes, [bytes] { RegularFile::unmap(bytes); });
      return 0;
    }
    // Some file systems cannot map; their files are read.
  }
  try {
    detail::DataBuilder builder;
    const int failure = readToTheEnd(file, maxLength, builder);
    if (!failure) data = builder.finish();
    return failure;
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
}

int writeFile(const NSData& data, const std::string& path, std::uint64_t options) {
  FileWriter writer;
  int failure = writer.open(
      path, options & NSDataWritingAtomic ? FileWriter::Way::atomic : FileWriter::Way::inPlace,
      options & NSDataWritingWithoutOverwriting ? FileWriter::Existing::refuse
                                                : FileWriter::Existing::replace);
  if (failure) return failure;
  data.enumerateByteRanges([&](std::span<const std::byte> bytes, NSRange) {
    failure = writer.write(bytes);
    return failure == 0;
  });
  return failure ? failure : writer.commit();
}

}  // namespace

NSData NSData::dataWithContentsOfFile(const NSString& path, std::uint64_t options,
                                      std::size_t maxLength, NSError* error) {
  NSData data;
  const int failure = readFile(systemPath(path), options, maxLength, data);
  return succeeded(failure, path, "read", error) ? data : nullptr;
}

bool NSData::writeToFile(const NSString& path, std::uint64_t options, NSError* error) const {
  if (isNil()) return succeeded(EINVAL, path, "written", error);
  return succeeded(writeFile(*this, systemPath(path), options), path, "written", error);
}

}  // namespace zeb
