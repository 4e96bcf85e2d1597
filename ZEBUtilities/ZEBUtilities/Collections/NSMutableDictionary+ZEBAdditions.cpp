#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSSet.h>
#include <ZEBUtilities/Collections/NSMutableDictionary+ZEBAdditions.h>

namespace zeb {

namespace {

template <class Collection>
Value objectOrNew(NSMutableDictionary& dictionary, const Value& key) {
  if (dictionary.isNil()) return {};
  if (const Value* existing = dictionary.find(key)) return *existing;
  const Collection made;
  dictionary.setObject(made, key);
  return made;
}

}  // namespace

void zeb_setObjectIfNotNil(NSMutableDictionary dictionary, const Value& object, const Value& key) {
  if (!object.isNil()) dictionary.setObject(object, key);
}

Value zeb_nonnullMutableArrayForKey(NSMutableDictionary dictionary, const Value& key) {
  return objectOrNew<NSMutableArray>(dictionary, key);
}

Value zeb_nonnullMutableDictionaryForKey(NSMutableDictionary dictionary, const Value& key) {
  return objectOrNew<NSMutableDictionary>(dictionary, key);
}

Value zeb_nonnullMutableSetForKey(NSMutableDictionary dictionary, const Value& key) {
  return objectOrNew<NSMutableSet>(dictionary, key);
}

}  // namespace zeb
