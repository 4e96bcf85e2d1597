#include <ZEBPlatform/Runtime/ObjectObserversPrivate.h>

#include <algorithm>

namespace zeb::detail {

ObservedChange::ObservedChange(const NSObject& object, const StringKey& key)
    : observers_(ObjectObservers::ifAny(object), key) {
  if (!observers_) return;
  entries_ = observers_->entries();
  retainObject(object);
  if (!observers_->looksBefore()) return;
  for (const Ref<KeyObserver>& entry : entries_) {
    if (isConcerned(entry)) prepare(*entry);
  }
}

ObservedChange::~ObservedChange() = default;

bool ObservedChange::isOf(const StringKey& key) const noexcept { return observers_->isFor(key); }

void ObservedChange::retainObject(const NSObject& object) noexcept {
  object_ = Ref<NSObject>(const_cast<NSObject*>(&object));
}

bool ObservedChange::isConcerned(const Ref<KeyObserver>& entry) const noexcept {
  if (entry->isRemoved()) return false;
  if (!entry->observation->isAlongPath()) return true;
  // A path that leads to this key of this object twice is notified once.
  return std::none_of(entries_.data(), &entry, [&](const Ref<KeyObserver>& earlier) {
    return earlier->observation == entry->observation && !earlier->isRemoved();
  });
}

void ObservedChange::prepare(const KeyObserver& entry) {
  const KeyPathObservation& observation = *entry.observation;
  if (observation.wants(NSKeyValueObservingOptionOld)) {
    if (!entry.isLast()) {
      oldValuesAlongPaths_.emplace_back(&entry, observation.valueFrom(object_, entry.level));
    } else if (!oldValue_) {
      oldValue_ = observers_->valueIn(object_);
    }
  }
  if (observation.wants(NSKeyValueObservingOptionPrior)) {
    tell(entry, KeyValueChange(oldValueFor(entry), nullptr, true));
  }
}

const Value* ObservedChange::oldValueFor(const KeyObserver& entry) const noexcept {
  if (!entry.observation->wants(NSKeyValueObservingOptionOld)) return nullptr;
  if (entry.isLast()) return oldValue_ ? &*oldValue_ : nullptr;
  for (const auto& [whose, value] : oldValuesAlongPaths_) {
    if (whose == &entry) return &value;
  }
  return nullptr;
}

bool ObservedChange::tell(const KeyObserver& entry, const KeyValueChange& change) const {
  if (entry.level == 0) return entry.observation->tell(object_, change);
  const Value first = entry.observation->object();
  return first && entry.observation->tell(first, change);
}

bool ObservedChange::tellAlongPath(const KeyObserver& entry) const {
  KeyPathObservation& observation = *entry.observation;
  observation.followPath();
  const bool wantsNew = observation.wants(NSKeyValueObservingOptionNew);
  const Value value = wantsNew ? observation.valueFrom(object_, entry.level) : Value();
  return tell(entry, KeyValueChange(oldValueFor(entry), wantsNew ? &value : nullptr, false));
}

void ObservedChange::tell() {
  std::optional<Value> newValue;
  std::optional<KeyValueChange> change;
  bool foundDead = false;
  for (const Ref<KeyObserver>& entry : entries_) {
    if (!isConcerned(entry)) continue;
    bool isAlive;
    if (entry->isLast()) {
      const bool wantsNew = entry->observation->wants(NSKeyValueObservingOptionNew);
      if (wantsNew && !newValue) newValue = observers_->valueIn(object_);
      const Value* oldValue = observers_->looksBefore() ? oldValueFor(*entry) : nullptr;
      const Value* value = wantsNew ? &*newValue : nullptr;
      if (!change || !change->holds(oldValue, value)) change.emplace(oldValue, value, false);
      isAlive = tell(*entry, *change);
    } else {
      isAlive = tellAlongPath(*entry);
    }
    if (!isAlive) foundDead = true;
  }
  if (foundDead) ObjectObservers::ifAny(*object_.objectPointer())->removeDead();
}

}  // namespace zeb::detail
