#include <Observation/ObjectiveCObserverQueue.h>
#include <Observation/ObjectiveCTypeErasedObservable.h>
#include <ZEBUtilities/Classes/ZEBRegisterClasses.h>
#include <ZEBUtilities/Coding/DecodingBuilder.h>
#include <ZEBUtilities/Coding/DecodingBuilderRegistry.h>
#include <ZEBUtilities/Coding/ZEBEncodable.h>
#include <ZEBUtilities/ZEBBackgroundQueue.h>
#include <ZEBUtilities/ZEBBackgroundTaskHandle.h>
#include <ZEBUtilities/ZEBCallbackDispatcher.h>
#include <ZEBUtilities/ZEBCircularFIFOBuffer.h>
#include <ZEBUtilities/ZEBDeallocHook.h>
#include <ZEBUtilities/ZEBJSONSerialization.h>
#include <ZEBUtilities/ZEBKVODispatcher.h>
#include <ZEBUtilities/ZEBMainThreadRunLoopDeferredTask.h>
#include <ZEBUtilities/ZEBRecordingStopwatch.h>
#include <ZEBUtilities/ZEBSafeOperation.h>
#include <ZEBUtilities/ZEBStopwatch.h>
#include <ZEBUtilities/ZEBThread.h>
#include <ZEBUtilities/ZEBTimer.h>
#include <ZEBUtilities/ZEBWeakValueObject.h>

namespace zeb {

void ZEBRegisterClasses() {
  ZEBTimer::runtimeClass();
  ZEBStopwatch::runtimeClass();
  ZEBRecordingStopwatch::runtimeClass();
  ZEBCircularFIFOBuffer::runtimeClass();
  ZEBThread::runtimeClass();
  ZEBMainThreadRunLoopDeferredTask::runtimeClass();
  ZEBBackgroundQueue::runtimeClass();
  ZEBBackgroundTaskHandle::runtimeClass();
  ZEBSafeOperation::runtimeClass();
  ZEBSafeBlockOperation::runtimeClass();
  ZEBSafeInvocationOperation::runtimeClass();
  ZEBKVODispatcher::runtimeClass();
  ZEBCallbackDispatcher::runtimeClass();
  ZEBDeallocHook::runtimeClass();
  ZEBWeakValueObject::runtimeClass();
  ZEBJSONSerialization::runtimeClass();
  ObjectiveCTypeErasedObservable::runtimeClass();
  ObjectiveCObserverQueue::runtimeClass();
  ZEBObjCEncodable::runtimeClass();
  BasicDecodingBuilder::runtimeClass();
  BasicDecodingBuilderRegistry::runtimeClass();
}

}  // namespace zeb

/// What the runtime calls, see Runtime/Registration.h. Programs that hold the static library are linked with
/// the option that takes this file in, although nothing in them refers to it.
extern "C" void zebRegisterClassesByName() { zeb::ZEBRegisterClasses(); }
