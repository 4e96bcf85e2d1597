#include <Json/NSJSONSerialization.h>
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
  detail::DataEncoder encoder;
  // The entry that this makes under "root" is in nobody's dictionary: the document is the root object's.
  encoder.encodeObject(root, "root");
  NSError error;
  NSData document = NSJSONSerialization::dataWithJSONObject(encoder.rootDictionary(), 0, &error);
  if (document.isNil()) throw error;
  return document;
}

}  // namespace zeb
