#include <ZEBPlatform/Runtime/ObjectObserversPrivate.h>

#include <algorithm>
#include <utility>

namespace zeb::detail {

namespace {

const PropertyRecord* registeredProperty(const NSObject& object, const NSString& key) {
  const Class* cls = object.classObject();
  return cls ? cls->findProperty(key) : nullptr;
}

Method getterOf(const NSObject& object, const NSString& key) {
  const PropertyRecord* property = registeredProperty(object, key);
  return property ? object.classObject()->findMethod(property->getter) : nullptr;
}

/// The count of hidden methods, read after the object's class is registered, because registering
/// the first class of a program itself hides methods.
std::uint64_t methodsHiddenBeside(const NSObject& object) {
  object.classObject();
  return methodsHidden();
}

/// Whether the observer needs the value before a change, or is to be called before it.
bool needsOldValue(const Ref<KeyObserver>& entry) {
  return entry->observation->wants(NSKeyValueObservingOptionOld | NSKeyValueObservingOptionPrior);
}

}  // namespace

KeyObservers::KeyObservers(const NSObject& object, const NSString& observedKey)
    : key_(observedKey),
      keyHash_(StringKey(key_).hash()),
      methodsHidden_(methodsHiddenBeside(object)),
      getter_(getterOf(object, key_)) {}

KeyObservers::KeyObservers(const KeyObservers& before)
    : ObserverArray(before),
      key_(before.key_),
      keyHash_(before.keyHash_),
      methodsHidden_(before.methodsHidden_),
      getter_(before.getter_),
      looksBefore_(std::ranges::any_of(entries(), &needsOldValue)) {}

void KeyObservers::add(Ref<KeyObserver> entry) noexcept {
  if (needsOldValue(entry)) looksBefore_ = true;
  append(std::move(entry));
}

ObjectObservers& ObjectObservers::of(const NSObject& object) {
  if (ObjectObservers* existing = ifAny(object)) return *existing;
  return static_cast<ObjectObservers&>(
      ObjectExtras::of(object).setObserversOnce(makeRef<ObjectObservers>()));
}

ObjectObservers::~ObjectObservers() {
  begun_.clear();
  const KeyObserversList* list = list_.get();
  if (!list) return;
  for (const Ref<KeyObservers>& one : list->parts) {
    for (const Ref<KeyObserver>& entry : one->entries()) {
      if (entry->level == 0) entry->observation->leavePath();
    }
  }
}

KeyObservers* ObjectObservers::partFor(const NSString& key) const noexcept {
  const KeyObserversList* list = list_.get();
  if (!list) return nullptr;
  const auto part = std::ranges::find(list->parts, key, &KeyObservers::key);
  return part == list->parts.end() ? nullptr : part->get();
}

void ObjectObservers::replacePart(const KeyObservers* part, Ref<KeyObservers> replacement,
                                  Replaced& replaced) {
  const KeyObserversList* old = list_.get();
  KeyObserversList list = old ? *old : KeyObserversList();
  const auto place = std::ranges::find(list.parts, part, &Ref<KeyObservers>::get);
  if (place == list.parts.end()) {
    list.parts.push_back(std::move(replacement));
  } else if (replacement->entries().empty()) {
    list.parts.erase(place);
  } else {
    *place = std::move(replacement);
  }
  list.capacity = 0;
  for (const Ref<KeyObservers>& one : list.parts) list.capacity += one->capacity();
  replaced.push_back(list_.replace(std::move(list)));
}

void ObjectObservers::add(const NSObject& object, const NSString& key, Ref<KeyObserver> entry) {
  Replaced replaced;
  const LockGuard guard(lock_);
  if (index_.isRemovalDue()) removeDead(replaced);
  KeyObserver& added = *entry;
  index_.reserve(added.owner());
  KeyObservers* part = partFor(key);
  if (part && !part->isFull()) {
    part->add(std::move(entry));
  } else {
    auto larger = part ? makeRef<KeyObservers>(*part) : makeRef<KeyObservers>(object, key);
    larger->add(std::move(entry));
    replacePart(part, std::move(larger), replaced);
  }
  index_.add(added.owner(), added);
}

void ObjectObservers::remove(KeyObserver& entry, Replaced& replaced) {
  KeyObservers* part = partFor(entry.key());
  index_.remove(entry);
  part->remove(entry);
  if (part->isSparse()) replacePart(part, makeRef<KeyObservers>(*part), replaced);
}

void ObjectObservers::removeDead(Replaced& replaced) {
  for (KeyObserver* dead : index_.deadEntries()) remove(*dead, replaced);
}

void ObjectObservers::removeDead() {
  Replaced replaced;
  const LockGuard guard(lock_);
  removeDead(replaced);
}

template <class Matches>
Ref<KeyPathObservation> ObjectObservers::removeNewest(const void* owner, const Matches& matches) {
  Ref<KeyPathObservation> removed;
  Replaced replaced;
  const LockGuard guard(lock_);
  KeyObserver* entry = index_.newestOf(owner);
  while (entry && !matches(*entry)) entry = index_.olderThan(*entry);
  if (!entry) return nullptr;
  removed = entry->observation;
  remove(*entry, replaced);
  return removed;
}

Ref<KeyPathObservation> ObjectObservers::remove(const NSKeyValueObserver* observer,
                                                const NSString& keyPath,
                                                const std::optional<void*>& context) {
  return removeNewest(observer, [&](const KeyObserver& one) {
    return one.level == 0 && one.observation->isOf(observer, keyPath, context);
  });
}

void ObjectObservers::remove(const KeyPathObservation& observation, std::size_t level) {
  removeNewest(&observation, [&](const KeyObserver& one) {
    return one.observation.get() == &observation && one.level == level;
  });
}

void ObjectObservers::begin(std::unique_ptr<ObservedChange> change) {
  const LockGuard guard(lock_);
  begun_.push_back({std::this_thread::get_id(), std::move(change)});
}

std::unique_ptr<ObservedChange> ObjectObservers::takeBegun(const StringKey& key) {
  const LockGuard guard(lock_);
  for (auto place = begun_.rbegin(); place != begun_.rend(); ++place) {
    if (place->thread != std::this_thread::get_id() || !place->change->isOf(key)) continue;
    std::unique_ptr<ObservedChange> change = std::move(place->change);
    begun_.erase(std::next(place).base());
    return change;
  }
  return nullptr;
}

}  // namespace zeb::detail
