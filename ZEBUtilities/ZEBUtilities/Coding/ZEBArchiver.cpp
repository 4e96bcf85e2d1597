#include <ZEBUtilities/Coding/DataEncoderPrivate.h>
#include <ZEBUtilities/Coding/ZEBArchiver.h>

namespace zeb {

NSData ZEBArchiver::archivedData(const ZEBEncodable& rootObject) const {
  return archivedValue(rootObject.value());
}

NSData ZEBArchiver::archivedData(const Ref<ZEBObjCEncodable>& rootObject) const {
  return archivedValue(Value(rootObject));
}

NSData ZEBArchiver::archivedValue(const Value& root) {
  return detail::DataEncoder().encodeRoot(root);
}

}  // namespace zeb
