// Reads the input as a property list. The result is either a value or an error, and each value
// respects the limits of depth and size.

#include <ZEBPlatform/Bundle/NSPropertyListSerialization.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/detail/TreeWalk.h>

#include <cstdint>
#include <cstdlib>
#include <span>

using namespace zeb;

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

struct Measure {
  std::size_t depth = 0;
  std::size_t values = 0;

  bool enter(const Value&, std::size_t level) {
    depth = level + 1 > depth ? level + 1 : depth;
    ++values;
    return true;
  }
  void leave(const Value&, std::size_t) {}
  void element(std::size_t) {}
  void key(const Value&, std::size_t) {}
  void leaf(const Value&) { ++values; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const NSData bytes = NSData::dataWithBytesNoCopy(std::as_bytes(std::span(data, size)), nullptr);
  NSPropertyListFormat format{};
  NSError error;
  const Value value = NSPropertyListSerialization::propertyListWithData(bytes, 0, &format, &error);
  require(value.isNil() != error.isNil());
  require(value.isNil() == (format == 0));
  if (value.isNil()) return 0;
  Measure measure;
  detail::walkTree(value, measure);
  // A UID of an archive becomes a dictionary, which is one level more.
  require(measure.depth <= NSPropertyListMaximumDepth + 1 && measure.values <= 2 * size);
  require(!value.description().isNil());
  return 0;
}
