#include <ZEBUtilities/ZEBBackgroundTaskHandle.h>

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

}  // namespace zeb
