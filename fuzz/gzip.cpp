// Reads the input as a gzip member, in one range and in two, and compresses it at every level.
// Decompressing is exact about its limit, and what was compressed is read back.

#include <ZEBPlatform/Logging/OLGLogging.h>
#include <ZEBUtilities/Encodings/NSData+ZlibAdditions.h>

#include <cstdint>
#include <cstdlib>
#include <span>

using namespace zeb;

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

NSData dataOf(std::span<const std::byte> bytes) {
  return NSData::dataWithBytesNoCopy(bytes, nullptr);
}

void checkContent(const NSData& member, const NSData& content) {
  const std::size_t length = content.length();
  require(zeb_gzipDecompress(member, length) == content);
  require(length == 0 || zeb_gzipDecompress(member, length - 1).isNil());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  OLGSetHandler([](const OLGRecord&) {});
  const std::span<const std::byte> bytes = std::as_bytes(std::span(data, size));
  const NSData whole = dataOf(bytes);
  const NSData content = zeb_gzipDecompress(whole);
  if (!content.isNil()) checkContent(whole, content);

  const std::size_t place = size > 0 ? data[size - 1] % size : 0;
  const NSData parts[] = {dataOf(bytes.first(place)), dataOf(bytes.subspan(place))};
  const NSData inParts = zeb_gzipDecompress(NSData::dataByJoining(parts));
  // A range that ends where a chunk of the output is full is refused.
  require(inParts == content || (inParts.isNil() && content.length() >= 16384));

  for (std::int32_t level = -1; level <= 9; ++level) {
    const NSData member = zeb_gzipCompress(whole, level);
    if (!member.isNil()) checkContent(member, whole);
  }
  return 0;
}
