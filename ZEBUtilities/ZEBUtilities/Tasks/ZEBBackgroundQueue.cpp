#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>
#include <ZEBUtilities/Tasks/ZEBBackgroundQueue.h>

#include <string>

namespace zeb {

const dispatch_queue_t& ZEBBackgroundQueue::sharedBackgroundQueue() {
  static const detail::NeverDestroyed<dispatch_queue_t> queue(
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
