#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Callbacks/ZEBWeakValueObject.h>

namespace zeb {

Class* ZEBWeakValueObject::runtimeClass() {
  using Self = ZEBWeakValueObject;
  static Class* const cls =
      registerClass("ZEBWeakValueObject", {
                                              classMethod("initWithValue:", &Self::withValue),
                                              classMethod("withValue:", &Self::withValue),
                                              property("value", &Self::value, &Self::setValue),
                                          });
  return cls;
}

}  // namespace zeb
