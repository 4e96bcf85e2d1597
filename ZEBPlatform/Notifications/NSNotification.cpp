#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Notifications/NSNotification.h>

#include <utility>

namespace zeb {

NSNotification::NSNotification(const NSString& name, Value object, const NSDictionary& userInfo)
    : name_(name.copy()), object_(std::move(object)), userInfo_(userInfo.copy()) {
  if (name_.isNil()) raiseInvalidArgument("a notification needs a name");
}

std::string NSNotification::description() const {
  return NSString::stringWithFormat("%@ {name = %@; object = %@; userInfo = %@}",
                                    NSObject::description(), name_, object_, userInfo_)
      .utf8();
}

}  // namespace zeb
