#include <ZEBPlatform/Runtime/BlockConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Tasks/ZEBSafeOperation.h>

namespace zeb {

namespace {

/// Adds the methods of all operations. Each class gets them itself, because the platform's
/// operation classes are not in the dynamic runtime.
Class* withOperationMethods(Class* cls) {
  extendClass(cls, {
                       classMethod("zeb_isCompletionBlockNotNilledBugPresent",
                                   &zeb_isCompletionBlockNotNilledBugPresent),
                       property("completionBlock", &NSOperation::completionBlock,
                                &NSOperation::setCompletionBlock),
                       property("name", &NSOperation::name, &NSOperation::setName),
                       property("queuePriority", &NSOperation::queuePriority,
                                &NSOperation::setQueuePriority),
                       property("qualityOfService", &NSOperation::qualityOfService,
                                &NSOperation::setQualityOfService),
                       method("start", &NSOperation::start),
                       method("main", &NSOperation::main),
                       method("cancel", &NSOperation::cancel),
                       method("isCancelled", &NSOperation::isCancelled),
                       method("isExecuting", &NSOperation::isExecuting),
                       method("isFinished", &NSOperation::isFinished),
                       method("isReady", &NSOperation::isReady),
                       method("isAsynchronous", &NSOperation::isAsynchronous),
                       method("addDependency:", &NSOperation::addDependency),
                       method("removeDependency:", &NSOperation::removeDependency),
                       method("waitUntilFinished", &NSOperation::waitUntilFinished),
                   });
  return cls;
}

}  // namespace

bool zeb_isCompletionBlockNotNilledBugPresent() noexcept { return false; }

Class* ZEBSafeOperation::runtimeClass() {
  using Self = ZEBSafeOperation;
  static Class* const cls = withOperationMethods(registerClass(
      "ZEBSafeOperation", {
                              classMethod("init", [] { return makeRef<Self>(); }),
                              classMethod("new", [] { return makeRef<Self>(); }),
                              method("zeb_clearCompletionBlock", &Self::zeb_clearCompletionBlock),
                          }));
  return cls;
}

Class* ZEBSafeBlockOperation::runtimeClass() {
  using Self = ZEBSafeBlockOperation;
  static Class* const cls = withOperationMethods(
      registerClass("ZEBSafeBlockOperation",
                    {
                        classMethod("init", [] { return makeRef<Self>(); }),
                        classMethod("new", [] { return makeRef<Self>(); }),
                        classMethod("blockOperationWithBlock:", &Self::blockOperationWithBlock),
                        method("addExecutionBlock:", &NSBlockOperation::addExecutionBlock),
                        method("zeb_clearCompletionBlock", &Self::zeb_clearCompletionBlock),
                    }));
  return cls;
}

Class* ZEBSafeInvocationOperation::runtimeClass() {
  using Self = ZEBSafeInvocationOperation;
  static Class* const cls = withOperationMethods(
      registerClass("ZEBSafeInvocationOperation",
                    {
                        classMethod("initWithTarget:selector:object:",
                                    [](const Value& target, SEL selector, const Value& object) {
                                      return makeRef<Self>(target, selector, object);
                                    }),
                        property("result", &NSInvocationOperation::result),
                        method("zeb_clearCompletionBlock", &Self::zeb_clearCompletionBlock),
                    }));
  return cls;
}

}  // namespace zeb
