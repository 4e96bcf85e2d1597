#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Json/NSJSONSerialization.h>
#include <ZEBPlatform/KeyedCoding/KeyedArchiveFormatPrivate.h>
#include <ZEBPlatform/KeyedCoding/NSKeyedUnarchiver.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace zeb {

NSKeyedUnarchiver::NSKeyedUnarchiver(const NSData& data, const NSString& className) {
  if (data.isNil()) {
    error_ = NSError(NSCocoaErrorDomain, NSCoderValueNotFoundError,
                     {{NSLocalizedDescriptionKey, "There is no data to read an archive from."}});
    return;
  }
  NSError syntaxError;
  const NSDictionary document(NSJSONSerialization::JSONObjectWithData(data, 0, &syntaxError));
  if (syntaxError) {
    error_ = NSError(NSCocoaErrorDomain, NSCoderReadCorruptError,
                     {{NSLocalizedDescriptionKey, "The data is no archive: it is not JSON."},
                      {NSUnderlyingErrorKey, syntaxError}});
    return;
  }
  const NSNumber version(document[detail::versionKey]);
  const NSString archived(document[detail::classKey]);
  fields_ = NSDictionary(document[detail::fieldsKey]);
  if (!document[detail::archiveKey].isEqual(detail::archiveKind) || fields_.isNil() ||
      archived.isNil()) {
    failCorrupt("The data is JSON, but no archive of one object.");
  } else if (!version.isSigned64() || version.longLongValue() != detail::archiveVersion) {
    failCorrupt(NSString::stringWithFormat("The archive has the unknown version %@.", version));
  } else if (archived != className) {
    failCorrupt(NSString::stringWithFormat("The archive contains a %@, but a %@ was expected.",
                                           archived, className));
  }
}

bool NSKeyedUnarchiver::containsValueForKey(const NSString& key) const {
  return !valueForKey(key).isNil();
}

std::int64_t NSKeyedUnarchiver::decodeIntegerForKey(const NSString& key) {
  return decodeInteger(key, INT64_MIN, INT64_MAX);
}

std::int32_t NSKeyedUnarchiver::decodeInt32ForKey(const NSString& key) {
  return static_cast<std::int32_t>(decodeInteger(key, INT32_MIN, INT32_MAX));
}

NSString NSKeyedUnarchiver::decodeStringForKey(const NSString& key) {
  const Value value = valueForKey(key);
  if (value.isNil() || value.isString()) return NSString(value.detachedCopy());
  failCorrupt(NSString::stringWithFormat("The field \"%@\" is not a string.", key));
  return nullptr;
}

NSArray NSKeyedUnarchiver::decodeArrayOfStringsForKey(const NSString& key) {
  const Value value = valueForKey(key);
  const NSArray array(value);
  if (value.isNil()) return nullptr;
  if (!array.isNil() && std::ranges::all_of(array, &Value::isString)) return array.detachedCopy();
  failCorrupt(NSString::stringWithFormat("The field \"%@\" is not an array of strings.", key));
  return nullptr;
}

std::int64_t NSKeyedUnarchiver::decodeInteger(const NSString& key, std::int64_t min,
                                              std::int64_t max) {
  const NSNumber number(valueForKey(key));
  if (number.isNil() && !containsValueForKey(key)) return 0;
  const bool isInRange =
      number.isSigned64() && number.longLongValue() >= min && number.longLongValue() <= max;
  if (isInRange) return number.longLongValue();
  failCorrupt(NSString::stringWithFormat(
      "The field \"%@\" is not an integer between %lld and %lld.", key, min, max));
  return 0;
}

Value NSKeyedUnarchiver::valueForKey(const NSString& key) const {
  if (key.isNil()) raiseInvalidArgument("a field of an archive needs a key");
  return fields_[key];
}

void NSKeyedUnarchiver::failWithError(const NSError& error) {
  if (!error_) error_ = error;
}

void NSKeyedUnarchiver::failCorrupt(const NSString& description) {
  failWithError(NSError(NSCocoaErrorDomain, NSCoderReadCorruptError,
                        {{NSLocalizedDescriptionKey, description}}));
}

}  // namespace zeb
