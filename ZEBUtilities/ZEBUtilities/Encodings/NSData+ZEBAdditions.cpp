#include <ZEBPlatform/Json/NSJSONSerialization.h>
#include <ZEBUtilities/Encodings/NSData+ZEBAdditions.h>

namespace zeb {

NSData zeb_prettyPrintedJSONData(const NSData& data) {
  const Value root = NSJSONSerialization::JSONObjectWithData(data, 0);
  if (root.isNil()) return nullptr;
  return NSJSONSerialization::dataWithJSONObject(root, NSJSONWritingPrettyPrinted);
}

NSString zeb_prettyPrintedJSONString(const NSData& data) {
  const NSData pretty = zeb_prettyPrintedJSONData(data);
  return pretty.isNil() ? NSString() : NSString::stringWithUTF8(pretty.view());
}

}  // namespace zeb
