#include <ZEBPlatform/Runtime/ObservationsPrivate.h>

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

std::size_t countActive(std::span<const Ref<Registration>> registrations) {
  return static_cast<std::size_t>(
      std::count_if(registrations.begin(), registrations.end(),
                    [](const Ref<Registration>& one) { return one->isActive.load(); }));
}

}  // namespace

KeyObservers::KeyObservers(const NSObject& object, const NSString& observedKey)
    : key_(observedKey),
      keyHash_(StringKey(key_).hash()),
      methodsHidden_(methodsHidden()),
      getter_(getterOf(object, key_)),
      capacity_(1),
      slots_(std::make_unique<Ref<Registration>[]>(capacity_)) {}

KeyObservers::KeyObservers(const KeyObservers& before)
    : key_(before.key_),
      keyHash_(before.keyHash_),
      methodsHidden_(before.methodsHidden_),
      getter_(before.getter_),
      capacity_(2 * countActive(before.registrations()) + 1),
      slots_(std::make_unique<Ref<Registration>[]>(capacity_)) {
  for (const Ref<Registration>& registration : before.registrations()) {
    if (registration->isActive) append(registration);
  }
}

void KeyObservers::append(Ref<Registration> registration) {
  constexpr auto before = NSKeyValueObservingOptionOld | NSKeyValueObservingOptionPrior;
  if (registration->observation->wants(before)) looksBefore_ = true;
  const std::size_t count = registrations().size();
  slots_[count] = std::move(registration);
  count_.store(count + 1, std::memory_order_release);
}

Observations& Observations::of(const NSObject& object) {
  if (Observations* existing = ifAny(object)) return *existing;
  return static_cast<Observations&>(
      ObjectExtras::of(object).setObservationsOnce(makeRef<Observations>()));
}

Observations::~Observations() {
  begun_.clear();
  const KeyObserversList* list = list_.get();
  if (!list) return;
  for (const Ref<KeyObservers>& one : *list) {
    for (const Ref<Registration>& registration : one->registrations()) {
      if (registration->level == 0) registration->observation->leavePath();
    }
  }
}

Observations::Replaced Observations::replacePart(const KeyObservers* part, Ref<KeyObservers> by) {
  const KeyObserversList* old = list_.get();
  KeyObserversList list = old ? *old : KeyObserversList();
  const auto place =
      std::find_if(list.begin(), list.end(), [&](const auto& one) { return one.get() == part; });
  if (place == list.end()) {
    list.push_back(std::move(by));
  } else if (by->registrations().empty()) {
    list.erase(place);
  } else {
    *place = std::move(by);
  }
  return list_.replace(std::move(list));
}

void Observations::add(const NSObject& object, const NSString& key,
                       Ref<Registration> registration) {
  bool mustCheck;
  {
    std::lock_guard guard(mutex_);
    mustCheck = ++additions_ >= nextCheck_;
  }
  if (mustCheck) removeDead();

  Replaced replaced;
  std::lock_guard guard(mutex_);
  // What may run out of memory comes first: a registration is linked only once a list keeps it alive.
  Registration& added = *registration;
  Registration*& latest = latest_[added.owner()];
  KeyObservers* part = partFor(key);
  if (part && !part->isFull()) {
    part->append(std::move(registration));
  } else {
    auto larger = part ? makeRef<KeyObservers>(*part) : makeRef<KeyObservers>(object, key);
    larger->append(std::move(registration));
    replaced = replacePart(part, std::move(larger));
  }
  added.older = latest;
  if (latest) latest->newer = &added;
  latest = &added;
}

KeyObservers* Observations::partFor(const NSString& key) const noexcept {
  const KeyObserversList* list = list_.get();
  if (!list) return nullptr;
  const auto part =
      std::find_if(list->begin(), list->end(), [&](const auto& one) { return one->key() == key; });
  return part == list->end() ? nullptr : part->get();
}

void Observations::deactivate(Registration& registration) {
  registration.isActive = false;
  if (registration.older) registration.older->newer = registration.newer;
  if (registration.newer) {
    registration.newer->older = registration.older;
  } else if (registration.older) {
    latest_[registration.owner()] = registration.older;
  } else {
    latest_.erase(registration.owner());
  }
}

template <class Matches>
Ref<Registration> Observations::removeLatest(const void* owner, const Matches& matches) {
  Ref<Registration> removed;
  Replaced replaced;
  std::lock_guard guard(mutex_);
  const auto found = latest_.find(owner);
  if (found == latest_.end()) return nullptr;
  Registration* candidate = found->second;
  while (candidate && !matches(*candidate)) candidate = candidate->older;
  if (!candidate) return nullptr;
  removed = Ref(candidate);
  deactivate(*candidate);
  KeyObservers* part = partFor(candidate->key());
  if (2 * ++part->inactive > part->registrations().size()) {
    replaced = replacePart(part, makeRef<KeyObservers>(*part));
  }
  return removed;
}

Ref<Observation> Observations::remove(const NSKeyValueObserver* observer, const NSString& keyPath,
                                      const std::optional<void*>& context) {
  const Ref<Registration> removed = removeLatest(observer, [&](const Registration& one) {
    return one.level == 0 && one.observation->isOf(observer, keyPath, context);
  });
  return removed ? removed->observation : nullptr;
}

void Observations::remove(const Observation& observation, std::size_t level) {
  removeLatest(&observation, [&](const Registration& one) {
    return one.observation.get() == &observation && one.level == level;
  });
}

void Observations::removeDead() {
  Replaced replaced;
  std::lock_guard guard(mutex_);
  const KeyObserversList* old = list_.get();
  if (!old) return;
  KeyObserversList list;
  additions_ = 0;
  for (const Ref<KeyObservers>& part : *old) {
    for (const Ref<Registration>& one : part->registrations()) {
      if (one->isActive && !one->observation->isObserverAlive()) deactivate(*one);
    }
    auto living = makeRef<KeyObservers>(*part);
    additions_ += living->registrations().size();
    if (!living->registrations().empty()) list.push_back(std::move(living));
  }
  nextCheck_ = 2 * additions_ + 8;
  replaced = list_.replace(std::move(list));
}

void Observations::begin(std::unique_ptr<ObservedChange> change) {
  std::lock_guard guard(mutex_);
  begun_.push_back({std::this_thread::get_id(), std::move(change)});
}

std::unique_ptr<ObservedChange> Observations::takeBegun(const StringKey& key) {
  std::lock_guard guard(mutex_);
  for (auto place = begun_.rbegin(); place != begun_.rend(); ++place) {
    if (place->thread != std::this_thread::get_id() || !place->change->isOf(key)) continue;
    std::unique_ptr<ObservedChange> change = std::move(place->change);
    begun_.erase(std::next(place).base());
    return change;
  }
  return nullptr;
}

}  // namespace zeb::detail
