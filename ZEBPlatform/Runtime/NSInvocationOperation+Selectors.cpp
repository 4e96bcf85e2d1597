#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Operations/NSInvocationOperation.h>
#include <ZEBPlatform/Runtime/Send.h>

#include <utility>

namespace zeb {

NSInvocationOperation::NSInvocationOperation(Value target, SEL selector, Value object) {
  if (!selector) raiseInvalidArgument("an invocation needs a selector");
  invocation_ = [target = std::move(target), selector, object = std::move(object)] {
    return performSelector(target, selector, object);
  };
}

}  // namespace zeb
