#include <ZEBUtilities/Collections/ElementOrderPrivate.h>
#include <ZEBUtilities/Collections/NSArray+ZEBAdditions.h>
#include <ZEBUtilities/Collections/NSMutableArray+ZEBAdditions.h>

#include <algorithm>

namespace zeb {

void zeb_addObjectIfNotNil(NSMutableArray array, const Value& object) {
  if (!object.isNil()) array.addObject(object);
}

void zeb_pushBack(NSMutableArray array, const Value& object) {
  zeb_addObjectIfNotNil(array, object);
}

void zeb_insertObjectIfNotNil(NSMutableArray array, const Value& object, std::size_t index) {
  if (!object.isNil()) array.insertObject(object, std::min(index, array.count()));
}

void zeb_pushFront(NSMutableArray array, const Value& object) {
  zeb_insertObjectIfNotNil(array, object, std::size_t{0});
}

void zeb_insertObjectIfNotNil(NSMutableArray array, const Value& object, NSComparator comparator) {
  if (object.isNil() || array.isNil()) return;
  const NSRange all{0, array.count()};
  array.insertObject(object,
                     array.indexOfObject(object, all, NSBinarySearchingInsertionIndex, comparator));
}

Value zeb_popBack(NSMutableArray array) {
  Value last = array.lastObject();
  if (!last.isNil()) array.removeLastObject();
  return last;
}

Value zeb_popFront(NSMutableArray array) {
  Value first = array.firstObject();
  if (!first.isNil()) array.removeObjectAtIndex(0);
  return first;
}

void zeb_sort(NSMutableArray array) {
  array.sortWithOptions(NSSortStable, detail::elementComparator(array));
}

void zeb_removeDuplicates(NSMutableArray array) {
  array.setArray(zeb_arrayByRemovingDuplicates(array));
}

}  // namespace zeb
