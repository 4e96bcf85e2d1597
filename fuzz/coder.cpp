// Reads the input as keyed archives of text ranges and as their property-list form. What was read
// is written and read again: both objects must have the same description.

#include <ZEBPlatform/Json/NSJSONSerialization.h>
#include <ZEBPlatform/KeyedCoding/NSKeyedArchiver.h>
#include <ZEBPlatform/KeyedCoding/NSKeyedUnarchiver.h>
#include <ZEBUtilities/Ranges/ZEBHyperlinkFlavoredRange.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

namespace zeb {
namespace {

template <class Range>
void requireSame(const Ref<Range>& left, const Ref<Range>& right) {
  if (!right || left->description() != right->description()) std::abort();
}

template <class Range>
void check(const NSData& data) {
  if (const auto range = NSKeyedUnarchiver::unarchivedObjectOfClass<Range>(data)) {
    requireSame(range, NSKeyedUnarchiver::unarchivedObjectOfClass<Range>(
                           NSKeyedArchiver::archivedDataWithRootObject(range)));
  }
  const NSDictionary dictionary(NSJSONSerialization::JSONObjectWithData(data, 0));
  if (const auto range = Range::initWithPlistDictionary(dictionary)) {
    requireSame(range, Range::initWithPlistDictionary(range->plistDictionaryValue()));
  }
}

}  // namespace
}  // namespace zeb

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace zeb;
  const NSData data = NSData::dataWithBytes(std::span(bytes, size));
  check<ZEBFlavoredRange>(data);
  check<ZEBHyperlinkFlavoredRange>(data);
  return 0;
}
