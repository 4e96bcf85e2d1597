#include <ZEBPlatform/Json/NSJSONSerialization.h>
#include <ZEBUtilities/Coding/DataDecoderPrivate.h>
#include <ZEBUtilities/Coding/ZEBUnarchiver.h>

namespace zeb {

ZEBUnarchiver::ZEBUnarchiver(Ref<DecodingBuilderRegistry> decodingBuilderRegistry)
    : decodingBuilderRegistry_(std::move(decodingBuilderRegistry)) {}

Value ZEBUnarchiver::unarchivedRoot(const NSData& data) const {
  NSError error;
  const Value root = NSJSONSerialization::JSONObjectWithData(data, 0, &error);
  if (root.isNil()) throw error;
  if (!root.isDictionary()) throw ZEBUnarchiverError::unexpectedRootDataType();
  return detail::DataDecoder(decodingBuilderRegistry_).decodeRoot(NSDictionary(root));
}

}  // namespace zeb
