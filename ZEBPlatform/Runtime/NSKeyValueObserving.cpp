#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Runtime/NSKeyValueObserving.h>
#include <ZEBPlatform/Runtime/ObjectObserversPrivate.h>

#include <exception>
#include <utility>

namespace zeb {

namespace {

void remove(const Ref<NSObject>& object, const ProtocolRef<NSKeyValueObserver>& observer,
            const NSString& keyPath, const std::optional<void*>& context) {
  if (!object) return;
  detail::ObjectObservers* observers = detail::ObjectObservers::ifAny(*object);
  const Ref<detail::KeyPathObservation> removed =
      observers ? observers->remove(observer.get(), keyPath, context) : nullptr;
  if (!removed) {
    throw NSException(
        NSRangeException,
        NSString::stringWithFormat("%s does not observe \"%@\" of %s",
                                   observer ? observer.object()->description() : std::string("nil"),
                                   keyPath, object->description()));
  }
  removed->leavePath();
}

}  // namespace

void addObserver(const Ref<NSObject>& object, const ProtocolRef<NSKeyValueObserver>& observer,
                 const NSString& keyPath, NSKeyValueObservingOptions options, void* context) {
  if (!object || !observer || !keyPath) return;
  const auto observation =
      makeRef<detail::KeyPathObservation>(object, observer, keyPath, options, context);
  // Unknown keys throw here, before anything is registered.
  const bool looksNow =
      observation->isAlongPath() || observation->wants(NSKeyValueObservingOptionInitial);
  if (looksNow) (void)observation->valueFrom(object, 0);
  detail::ObjectObservers::of(*object).add(
      *object, observation->keyAt(0), makeRef<detail::KeyObserver>(observation, std::size_t{0}));
  if (observation->isAlongPath()) observation->followPath();

  if (!observation->wants(NSKeyValueObservingOptionInitial)) return;
  const bool wantsNew = observation->wants(NSKeyValueObservingOptionNew);
  try {
    const Value value = wantsNew ? observation->valueFrom(object, 0) : Value();
    observation->tell(object, KeyValueChange(nullptr, wantsNew ? &value : nullptr, false));
  } catch (...) {
    // A call that throws must not leave an observer behind.
    remove(object, observer, keyPath, context);
    throw;
  }
}

void removeObserver(const Ref<NSObject>& object, const ProtocolRef<NSKeyValueObserver>& observer,
                    const NSString& keyPath) {
  remove(object, observer, keyPath, std::nullopt);
}

void removeObserver(const Ref<NSObject>& object, const ProtocolRef<NSKeyValueObserver>& observer,
                    const NSString& keyPath, void* context) {
  remove(object, observer, keyPath, context);
}

void KeyValueChangeScope::begin(const NSObject& object, const StringKey& key) {
  change_.emplace(object, key);
  if (!change_->concernsAnybody()) change_.reset();
}

void KeyValueChangeScope::end() {
  try {
    change_->tell();
  } catch (...) {
    if (std::uncaught_exceptions() == 0) throw;
  }
}

void willChangeValueForKey(const Ref<NSObject>& object, const StringKey& key) {
  if (!object || !detail::isObserved(*object)) return;
  auto change = std::make_unique<detail::ObservedChange>(*object, key);
  if (!change->concernsAnybody()) return;
  change->releaseObject();
  detail::ObjectObservers::of(*object).begin(std::move(change));
}

void didChangeValueForKey(const Ref<NSObject>& object, const StringKey& key) {
  if (!object || !detail::isObserved(*object)) return;
  const auto change = detail::ObjectObservers::of(*object).takeBegun(key);
  if (!change) return;
  change->retainObject(*object);
  change->tell();
}

}  // namespace zeb
