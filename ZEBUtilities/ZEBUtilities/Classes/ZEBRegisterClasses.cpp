#include <Observation/ObjectiveCObserverQueue.h>
#include <Observation/ObjectiveCTypeErasedObservable.h>
#include <ZEBUtilities/Classes/ZEBRegisterClasses.h>
#include <ZEBUtilities/Coding/DecodingBuilder.h>
#include <ZEBUtilities/Coding/DecodingBuilderRegistry.h>
#include <ZEBUtilities/Coding/ZEBEncodable.h>
#include <ZEBUtilities/ZEBTimer.h>

namespace zeb {

void ZEBRegisterClasses() {
  ZEBTimer::runtimeClass();
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
