#include <ZEBUtilities/Coding/ArchiveFormatPrivate.h>

#include <string>

namespace zeb::detail {

const ArchiveNames& ArchiveNames::shared() {
  static const auto* names = new ArchiveNames;
  return *names;
}

NSString FieldKeys::stored(const StringKey& key) {
  if (const Value* known = stored_.find(key)) return NSString(*known);
  const NSString own = key.string();
  const NSString prefixed(std::string(prefix) + own.utf8());
  if (!own.isNil()) stored_.setObject(prefixed, own);
  return prefixed;
}

}  // namespace zeb::detail
