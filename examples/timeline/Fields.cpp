#include "Fields.h"

#include <ZEBUtilities/Collections/NSArray+ZEBAdditions.h>
#include <ZEBUtilities/Collections/NSDictionary+ZEBAdditions.h>
#include <ZEBUtilities/Text/NSString+HTTPSerialization.h>
#include <ZEBUtilities/Text/NSString+ZEBHTMLEntity.h>

namespace zeb::timeline {

template <class Handle>
const Handle& Fields::noted(const StringKey& key, const Handle& result) const {
  const Value* found = result.isNil() ? dictionary_.find(key) : nullptr;
  if (found) ++(found->isNull() ? gaps_.nulls : gaps_.unusable);
  return result;
}

NSString Fields::string(const StringKey& key, const NSString& defaultValue) const {
  const NSString string = noted(key, zeb_stringForKey(dictionary_, key));
  return string.isNil() ? defaultValue : NSString(string.detachedCopy());
}

std::int64_t Fields::integer(const StringKey& key) const {
  return hasNumber(key) ? zeb_longLongForKey(dictionary_, key) : 0;
}

NSString Fields::text(const StringKey& key, const NSString& defaultValue) const {
  return zeb_stringByUnescapingHTMLEntities(string(key, defaultValue));
}

NSDate Fields::date(const StringKey& key) const {
  const NSDate named = zeb_dateFromStringFormattedLikeHTTPDate(zeb_stringForKey(dictionary_, key));
  if (!named.isNil()) return named;
  return hasNumber(key) ? zeb_dateFromTimeIntervalSince1970ForKey(dictionary_, key) : NSDate();
}

NSRange Fields::range(const StringKey& key) const {
  const NSArray pair = noted(key, zeb_arrayForKey(dictionary_, key));
  return {zeb_numberAtIndex(pair, 0).unsignedLongLongValue(),
          zeb_numberAtIndex(pair, 1).unsignedLongLongValue()};
}

Fields Fields::fields(const StringKey& key) const {
  return Fields(noted(key, zeb_dictionaryForKey(dictionary_, key)), gaps_);
}

NSArray Fields::dictionaries(const StringKey& key) const {
  const NSArray dictionaries = noted(key, zeb_arrayOfDictionariesForKey(dictionary_, key));
  gaps_.dropped += zeb_arrayForKey(dictionary_, key).count() - dictionaries.count();
  return dictionaries;
}

NSArray Fields::strings(const StringKey& key) const {
  NSMutableArray strings;
  const NSArray all = noted(key, zeb_arrayForKey(dictionary_, key));
  for (const Value& element : all) {
    if (element.isString()) strings.addObject(element.detachedCopy());
  }
  gaps_.dropped += all.count() - strings.count();
  return strings;
}

/// The readers take any text as a number, "soon" as 0, which suits a counter but not a date.
bool Fields::hasNumber(const StringKey& key) const {
  if (!zeb_numberForKey(dictionary_, key).isNil()) return true;
  const std::string text = zeb_stringForKey(dictionary_, key).utf8();
  if (text.find_first_of("0123456789") == (text.starts_with('-') ? 1 : 0)) {
    ++gaps_.numbersAsText;
    return true;
  }
  noted(key, NSNumber());
  return false;
}

}  // namespace zeb::timeline
