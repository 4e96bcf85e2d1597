#include <ZEBPlatform/Runtime/HeldObjectPrivate.h>
#include <ZEBPlatform/Runtime/ObjectObserversPrivate.h>

#include <algorithm>
#include <new>

namespace zeb::detail {

namespace {

/// A value that is read on first use, where it stays: an assignment of the result would wait until
/// the processor has stored it.
class LateValue {
 public:
  LateValue() noexcept {}
  LateValue(const LateValue&) = delete;
  LateValue& operator=(const LateValue&) = delete;
  ~LateValue() {
    if (isRead_) value_.~Value();
  }
  template <class Read>
  const Value& get(const Read& read) {
    if (!isRead_) new (&value_) Value(read());
    isRead_ = true;
    return value_;
  }

 private:
  union {
    Value value_;
  };
  bool isRead_ = false;
};

}  // namespace

/// The object as a value that keeps it alive.
inline const Value* ObservedChange::retained(const NSObject& object) noexcept {
  const HeldObject* held = HeldObject::innermost();
  if (held && held->holds(object, this)) return &held->object();
  object.retain();
  ownedObject_ = Value(Value::adoptObject, const_cast<NSObject*>(&object));
  return &ownedObject_;
}

inline bool ObservedChange::isConcerned(const Ref<KeyObserver>& entry) const noexcept {
  if (entry->isRemoved()) return false;
  return !entry->observation->isAlongPath() || isFirstOfPath(entry);
}

ObservedChange::ObservedChange(const NSObject& object, const StringKey& key)
    : observers_(ObjectObservers::ifAny(object), key) {
  if (!observers_) return;
  entries_ = observers_->entries();
  object_ = retained(object);
  if (!observers_->looksBefore()) return;
  for (const Ref<KeyObserver>& entry : entries_) {
    if (isConcerned(entry)) prepare(*entry);
  }
}

ObservedChange::~ObservedChange() = default;

void ObservedChange::retainObject(const NSObject& object) noexcept { object_ = retained(object); }

bool ObservedChange::isOf(const StringKey& key) const noexcept { return observers_->isFor(key); }

/// A path that leads to this key of this object twice is notified once.
bool ObservedChange::isFirstOfPath(const Ref<KeyObserver>& entry) const noexcept {
  return std::none_of(entries_.data(), &entry, [&](const Ref<KeyObserver>& earlier) {
    return earlier->observation == entry->observation && !earlier->isRemoved();
  });
}

void ObservedChange::prepare(const KeyObserver& entry) {
  const KeyPathObservation& observation = *entry.observation;
  if (observation.wants(NSKeyValueObservingOptionOld)) {
    if (!entry.isLast()) {
      oldValuesAlongPaths_.emplace_back(&entry, observation.valueFrom(*object_, entry.level));
    } else if (!oldValue_) {
      oldValue_ = observers_->valueIn(*object_);
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

void ObservedChange::tell(const KeyObserver& entry, const KeyValueChange& change) {
  if (entry.level == 0) {
    if (!entry.observation->tell(*object_, change)) metDeadObserver_ = true;
  } else {
    const Value first = entry.observation->object();
    if (!first || !entry.observation->tell(first, change)) metDeadObserver_ = true;
  }
}

void ObservedChange::tellAlongPath(const KeyObserver& entry) {
  KeyPathObservation& observation = *entry.observation;
  observation.followPath();
  const bool wantsNew = observation.wants(NSKeyValueObservingOptionNew);
  const Value value = wantsNew ? observation.valueFrom(*object_, entry.level) : Value();
  tell(entry, KeyValueChange(oldValueFor(entry), wantsNew ? &value : nullptr, false));
}

void ObservedChange::tell() {
  LateValue newValue;
  std::optional<KeyValueChange> change;
  for (const Ref<KeyObserver>& entry : entries_) {
    if (!isConcerned(entry)) continue;
    if (!entry->isLast()) {
      tellAlongPath(*entry);
      continue;
    }
    const bool wantsNew = entry->observation->wants(NSKeyValueObservingOptionNew);
    const Value* value =
        wantsNew ? &newValue.get([&] { return observers_->valueIn(*object_); }) : nullptr;
    const Value* oldValue = observers_->looksBefore() ? oldValueFor(*entry) : nullptr;
    if (!change || !change->holds(oldValue, value)) change.emplace(oldValue, value, false);
    tell(*entry, *change);
  }
  if (metDeadObserver_) ObjectObservers::ifAny(*object_->objectPointer())->removeDead();
}

}  // namespace zeb::detail
