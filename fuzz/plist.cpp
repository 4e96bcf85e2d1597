// Reads the input as a property list: a value or an error, never both or neither; what was read is no
// deeper or larger than the limits say.

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
  // An archive's UID is a dictionary of its own.
  require(measure.depth <= NSPropertyListMaximumDepth + 1 && measure.values <= 2 * size);
  require(!value.description().isNil());
  return 0;
}
