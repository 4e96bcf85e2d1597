#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>
#include <ZEBUtilities/Tasks/ZEBBackgroundQueue.h>

#include <string>

namespace zeb {

const dispatch_queue_t& ZEBBackgroundQueue::sharedBackgroundQueue() {
  // Never destroyed: static objects may queue work while the process exits.
  static const auto* queue = new dispatch_queue_t(
      dispatch_queue_create(std::string(ZEBUtilitiesIdentifierPrefix) + ".queue.background"));
  return *queue;
}

Class* ZEBBackgroundQueue::runtimeClass() {
  using Self = ZEBBackgroundQueue;
  static Class* const cls = registerClass(
      "ZEBBackgroundQueue", {
                                classMethod("sharedBackgroundQueue", &Self::sharedBackgroundQueue),
                            });
  return cls;
}

}  // namespace zeb
