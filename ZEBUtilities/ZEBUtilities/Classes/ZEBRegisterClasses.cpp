#include <Keychain/KeychainItemUtils.h>
#include <Keychain/ZEBKeychain.h>
#include <Keychain/ZEBKeychainDefaultOrvaneConfiguration.h>
#include <Keychain/ZEBRSAOperations.h>
#include <Keychain/ZEBSecurityKey.h>
#include <Observation/ObjectiveCObserverQueue.h>
#include <Observation/ObjectiveCTypeErasedObservable.h>
#include <ZEBUtilities/Callbacks/ZEBCallbackDispatcher.h>
#include <ZEBUtilities/Callbacks/ZEBDeallocHook.h>
#include <ZEBUtilities/Callbacks/ZEBKVODispatcher.h>
#include <ZEBUtilities/Callbacks/ZEBWeakValueObject.h>
#include <ZEBUtilities/Classes/ZEBRegisterClasses.h>
#include <ZEBUtilities/Coding/DecodingBuilder.h>
#include <ZEBUtilities/Coding/DecodingBuilderRegistry.h>
#include <ZEBUtilities/Coding/ZEBEncodable.h>
#include <ZEBUtilities/Collections/ZEBCircularFIFOBuffer.h>
#include <ZEBUtilities/Device/ZEBStackTraceSampler.h>
#include <ZEBUtilities/Encodings/Base32Codec.h>
#include <ZEBUtilities/JSON/ZEBJSONSerialization.h>
#include <ZEBUtilities/Ranges/ZEBFlavoredRange.h>
#include <ZEBUtilities/Ranges/ZEBHyperlinkFlavoredRange.h>
#include <ZEBUtilities/Tasks/ZEBBackgroundQueue.h>
#include <ZEBUtilities/Tasks/ZEBBackgroundTaskHandle.h>
#include <ZEBUtilities/Tasks/ZEBMainThreadRunLoopDeferredTask.h>
#include <ZEBUtilities/Tasks/ZEBSafeOperation.h>
#include <ZEBUtilities/Tasks/ZEBThread.h>
#include <ZEBUtilities/Timing/ZEBRecordingStopwatch.h>
#include <ZEBUtilities/Timing/ZEBStopwatch.h>
#include <ZEBUtilities/Timing/ZEBTimer.h>

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
  Base32Codec::runtimeClass();
  ZEBStackTraceSampler::runtimeClass();
  ObjectiveCTypeErasedObservable::runtimeClass();
  ObjectiveCObserverQueue::runtimeClass();
  ZEBFlavoredRange::runtimeClass();
  ZEBHyperlinkFlavoredRange::runtimeClass();
  ZEBObjCEncodable::runtimeClass();
  BasicDecodingBuilder::runtimeClass();
  BasicDecodingBuilderRegistry::runtimeClass();
  KeychainItemUtils::runtimeClass();
  ZEBKeychain::runtimeClass();
  ZEBKeychainDefaultOrvaneConfiguration::runtimeClass();
  ZEBRSAOperations::runtimeClass();
  ZEBSecurityKey::runtimeClass();
}

}  // namespace zeb

/// The runtime calls this, see Runtime/Registration.h. Programs with the static library are linked
/// with an option that includes this file, although no other code refers to it.
extern "C" void zebRegisterClassesByName() { zeb::ZEBRegisterClasses(); }
