#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Tasks/ZEBBackgroundTaskHandle.h>

namespace zeb {

ZEBBackgroundTaskHandle::ZEBBackgroundTaskHandle(
    const NSString& identifier, const NSString& name,
    const ProtocolRef<ZEBBackgroundTaskHandleDelegate>& delegate)
    : identifier_(identifier.copy()), name_(name.copy()), delegate_(delegate) {}

ZEBBackgroundTaskHandle::~ZEBBackgroundTaskHandle() {
  if (const ProtocolRef delegate = delegate_.lock()) {
    delegate->backgroundTaskHandleWillBeDeallocated(identifier_);
  }
}

Class* ZEBBackgroundTaskHandle::runtimeClass() {
  using Self = ZEBBackgroundTaskHandle;
  static Class* const cls = registerClass(
      "ZEBBackgroundTaskHandle",
      {
          classMethod("initWithIdentifier:name:delegate:",
                      [](const NSString& identifier, const NSString& name,
                         const ProtocolRef<ZEBBackgroundTaskHandleDelegate>& delegate) {
                        return makeRef<Self>(identifier, name, delegate);
                      }),
          property("identifier", &Self::identifier),
          property("name", &Self::name),
          property("delegate", &Self::delegate, &Self::setDelegate),
      });
  return cls;
}

}  // namespace zeb
