#include <ZEBUtilities/Collections/NSArray+ZEBAdditions.h>
#include <ZEBUtilities/Collections/NSDictionary+ZEBAdditions.h>

namespace zeb {

NSMutableArray zeb_arrayByRemovingInvalidPropertyListObjects(const NSArray& array) {
  return NSMutableArray::from(_zeb_propertyListObjectForObject(array));
}

}  // namespace zeb
