#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Json/NSJSONSerialization.h>
#include <ZEBPlatform/KeyedCoding/KeyedArchiveFormatPrivate.h>
#include <ZEBPlatform/KeyedCoding/NSKeyedArchiver.h>
#include <ZEBPlatform/Runtime/Class.h>

#include <algorithm>

namespace zeb {

NSData NSKeyedArchiver::archivedData(const NSObject& object, const NSSecureCoding& coding) {
  NSKeyedArchiver archiver;
  coding.encodeWithCoder(archiver);
  const Class* const cls = object.classObject();
  const NSDictionary document{
      {detail::archiveKey, detail::archiveKind},
      {detail::versionKey, detail::archiveVersion},
      {detail::classKey, cls ? NSString(cls->name()) : NSString(object.className())},
      {detail::fieldsKey, archiver.fields_},
  };
  return NSJSONSerialization::dataWithJSONObject(document, 0);
}

void NSKeyedArchiver::encodeInteger(std::int64_t value, const NSString& key) { encode(value, key); }
void NSKeyedArchiver::encodeInt32(std::int32_t value, const NSString& key) { encode(value, key); }
void NSKeyedArchiver::encodeObject(const NSString& string, const NSString& key) {
  encode(string, key);
}

void NSKeyedArchiver::encodeObject(const NSArray& strings, const NSString& key) {
  if (!std::ranges::all_of(strings, &Value::isString)) {
    raiseInvalidArgument("a field of an archive can be an array of strings, but of nothing else");
  }
  encode(strings.copy(), key);
}

void NSKeyedArchiver::encode(const Value& value, const NSString& key) {
  if (key.isNil()) raiseInvalidArgument("a field of an archive needs a key");
  if (!value.isNil()) fields_.setObject(value, key);
}

}  // namespace zeb
