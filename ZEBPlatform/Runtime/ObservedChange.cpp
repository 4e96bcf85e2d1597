#include <ZEBPlatform/Runtime/ObservationsPrivate.h>

#include <algorithm>

namespace zeb::detail {

ObservedChange::ObservedChange(const NSObject& object, const StringKey& key)
    : observers_(Observations::ifAny(object), key) {
  if (!observers_) return;
  registrations_ = observers_->registrations();
  retainObject(object);
  if (!observers_->looksBefore()) return;
  for (const Ref<Registration>& registration : registrations_) {
    if (isConcerned(registration)) prepare(*registration);
  }
}

ObservedChange::~ObservedChange() = default;

bool ObservedChange::isOf(const StringKey& key) const noexcept { return observers_->isFor(key); }

void ObservedChange::retainObject(const NSObject& object) noexcept {
  object_ = Ref<NSObject>(const_cast<NSObject*>(&object));
}

bool ObservedChange::isConcerned(const Ref<Registration>& registration) const noexcept {
  if (!registration->isActive) return false;
  if (!registration->observation->isAlongPath()) return true;
  // A path that comes to this key of this object twice is told of once.
  return std::none_of(registrations_.data(), &registration, [&](const Ref<Registration>& earlier) {
    return earlier->observation == registration->observation && earlier->isActive;
  });
}

void ObservedChange::prepare(const Registration& registration) {
  const Observation& observation = *registration.observation;
  if (observation.wants(NSKeyValueObservingOptionOld)) {
    if (!registration.isLast()) {
      oldValuesAlongPaths_.emplace_back(&registration,
                                        observation.valueFrom(object_, registration.level));
    } else if (!oldValue_) {
      oldValue_ = observers_->valueIn(object_);
    }
  }
  if (observation.wants(NSKeyValueObservingOptionPrior)) {
    tell(registration, KeyValueChange(oldValueFor(registration), nullptr, true));
  }
}

const Value* ObservedChange::oldValueFor(const Registration& registration) const noexcept {
  if (!registration.observation->wants(NSKeyValueObservingOptionOld)) return nullptr;
  if (registration.isLast()) return oldValue_ ? &*oldValue_ : nullptr;
  for (const auto& [whose, value] : oldValuesAlongPaths_) {
    if (whose == &registration) return &value;
  }
  return nullptr;
}

bool ObservedChange::tell(const Registration& registration, const KeyValueChange& change) const {
  if (registration.level == 0) return registration.observation->tell(object_, change);
  const Value first = registration.observation->object();
  return first && registration.observation->tell(first, change);
}

bool ObservedChange::tellAlongPath(const Registration& registration) const {
  Observation& observation = *registration.observation;
  observation.followPath();
  const bool wantsNew = observation.wants(NSKeyValueObservingOptionNew);
  const Value value = wantsNew ? observation.valueFrom(object_, registration.level) : Value();
  return tell(registration,
              KeyValueChange(oldValueFor(registration), wantsNew ? &value : nullptr, false));
}

void ObservedChange::tell() {
  std::optional<Value> newValue;
  std::optional<KeyValueChange> change;
  bool foundDead = false;
  for (const Ref<Registration>& registration : registrations_) {
    if (!isConcerned(registration)) continue;
    bool isAlive;
    if (registration->isLast()) {
      const bool wantsNew = registration->observation->wants(NSKeyValueObservingOptionNew);
      if (wantsNew && !newValue) newValue = observers_->valueIn(object_);
      const Value* oldValue = observers_->looksBefore() ? oldValueFor(*registration) : nullptr;
      const Value* value = wantsNew ? &*newValue : nullptr;
      if (!change || !change->holds(oldValue, value)) change.emplace(oldValue, value, false);
      isAlive = tell(*registration, *change);
    } else {
      isAlive = tellAlongPath(*registration);
    }
    if (!isAlive) foundDead = true;
  }
  if (foundDead) Observations::ifAny(*object_.objectPointer())->removeDead();
}

}  // namespace zeb::detail
