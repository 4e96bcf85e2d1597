#include <ZEBUtilities/Coding/ArchiveFormatPrivate.h>

#include <string>

namespace zeb::detail {

const NSString& FieldKeys::stored(const StringKey& key) {
  Remembered& place = remembered_[key.hash() % remembered_.size()];
  const bool isKnown =
      place.hash == key.hash() && !place.own.isNil() && key.matches(place.own.text());
  if (!isKnown) {
    place.hash = key.hash();
    place.own = key.string();
    place.stored = NSString(std::string(archive::fieldPrefix) + place.own.utf8());
  }
  return place.stored;
}

}  // namespace zeb::detail
