#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBPlatform/Runtime/BlockConversion.h>
#include <ZEBPlatform/Runtime/NSAssertionHandler.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Callbacks/ZEBKVODispatcher.h>

#include <optional>
#include <utility>

namespace zeb {

ZEBKVODispatcher::ZEBKVODispatcher(const NSString& keyPath, const Ref<NSObject>& object,
                                   NSKeyValueObservingOptions options, void* context,
                                   DispatchBlock dispatchBlock)
    : keyPath_(keyPath.copy()),
      weakObject_(object),
      dispatchBlock_(std::move(dispatchBlock)),
      options_(options),
      context_(context) {}

Ref<ZEBKVODispatcher> ZEBKVODispatcher::initToObserveValueForKeyPath_ofWeakObject(
    const NSString& keyPath, const Ref<NSObject>& object, NSKeyValueObservingOptions options,
    void* context, bool suspended, DispatchBlock dispatchBlock) {
  if (!keyPath || !object || !dispatchBlock) {
    raiseInvalidArgument("Must provide keyPath, object and dispatchBlock");
  }
  auto dispatcher = Ref<ZEBKVODispatcher>::adopt(
      new ZEBKVODispatcher(keyPath, object, options, context, std::move(dispatchBlock)));
  dispatcher->setSuspendDispatching(suspended);
  return dispatcher;
}

Ref<ZEBKVODispatcher> ZEBKVODispatcher::initToObserveValueForKeyPath_ofObject(
    const NSString& keyPath, const Ref<NSObject>& object, NSKeyValueObservingOptions options,
    void* context, bool suspended, DispatchBlock dispatchBlock) {
  Ref<ZEBKVODispatcher> dispatcher = initToObserveValueForKeyPath_ofWeakObject(
      keyPath, object, options, context, suspended, std::move(dispatchBlock));
  dispatcher->object_ = object;
  return dispatcher;
}

ZEBKVODispatcher::~ZEBKVODispatcher() {
  // A destructor can't throw. It may be unregistered already, because a change under way while it
  // dies finds it dead and removes it.
  if (suspendDispatching_) return;
  try {
    if (!stopObserving()) fatal(reasonForGoneObject().utf8());
  } catch (const NSException&) {
  }
}

void ZEBKVODispatcher::setSuspendDispatching(bool suspendDispatching) {
  if (suspendDispatching == suspendDispatching_) return;
  suspendDispatching_ = suspendDispatching;
  if (suspendDispatching) {
    if (!stopObserving()) throw NSException(NSGenericException, reasonForGoneObject());
    return;
  }
  try {
    zeb::addObserver(weakObject_.lock(), Ref<ZEBKVODispatcher>(this), keyPath_, options_, context_);
  } catch (...) {
    suspendDispatching_ = true;  // an unknown key, or the first call has failed
    throw;
  }
}

bool ZEBKVODispatcher::stopObserving() {
  const Ref<NSObject> object = weakObject_.lock();
  if (object) removeObserver(object, Ref<ZEBKVODispatcher>(this), keyPath_);
  return static_cast<bool>(object);
}

NSString ZEBKVODispatcher::reasonForGoneObject() const {
  // The two arguments stand in each other's place; this is the text that people know.
  return NSString::stringWithFormat(
      "Unable to remove KVO for keyPath %s,  you need to remove all references to this %@ before "
      "observee is deallocated.",
      className(), keyPath_);
}

void ZEBKVODispatcher::observeValueForKeyPath(const NSString& keyPath, const Value& object,
                                              const KeyValueChange& change, void* context) {
  if (suspendDispatching_) return;
  if (!keyPath.isEqualToString(keyPath_)) {
    handleFailureInMethod("observeValueForKeyPath:ofObject:change:context:"_sel,
                          Ref<ZEBKVODispatcher>(this), "ZEBUtilities/ZEBUtilities/ZEBKVODispatcher",
                          76, "Observed keyPath doesn't match registered keyPath");
  }
  dispatchBlock_(keyPath, object, change, context);
}

namespace {

/// A change that travels through the runtime is its dictionary.
void observeValue(ZEBKVODispatcher& self, const NSString& keyPath, const Value& object,
                  const NSDictionary& change, void* context) {
  const auto reported = [&change](const char* key) {
    const Value value = change[NSString(key)];
    return value.isNull()  ? std::optional<Value>(Value())
           : value.isNil() ? std::nullopt
                           : std::optional(value);
  };
  const std::optional<Value> oldValue = reported(NSKeyValueChangeOldKey);
  const std::optional<Value> newValue = reported(NSKeyValueChangeNewKey);
  self.observeValueForKeyPath(
      keyPath, object,
      KeyValueChange(oldValue ? &*oldValue : nullptr, newValue ? &*newValue : nullptr,
                     change[NSString(NSKeyValueChangeNotificationIsPriorKey)].boolValue()),
      context);
}

}  // namespace

Class* ZEBKVODispatcher::runtimeClass() {
  using Self = ZEBKVODispatcher;
  static Class* const cls = registerClass(
      "ZEBKVODispatcher",
      {
          classMethod("initToObserveValueForKeyPath:ofWeakObject:options:context:suspended:"
                      "withDispatchBlock:",
                      &Self::initToObserveValueForKeyPath_ofWeakObject),
          classMethod(
              "initToObserveValueForKeyPath:ofObject:options:context:suspended:withDispatchBlock:",
              &Self::initToObserveValueForKeyPath_ofObject),
          property("keyPath", &Self::keyPath),
          property("object", &Self::object),
          property("weakObject", &Self::weakObject),
          property("dispatchBlock", &Self::dispatchBlock),
          property("options", &Self::options),
          property("context", &Self::context),
          property("suspendDispatching", &Self::suspendDispatching, &Self::setSuspendDispatching),
          method("observeValueForKeyPath:ofObject:change:context:", &observeValue),
      });
  return cls;
}

}  // namespace zeb
