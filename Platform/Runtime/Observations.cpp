#include <Runtime/ObservationsPrivate.h>

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

bool lookBefore(const std::vector<Ref<Registration>>& registrations) {
  return std::any_of(registrations.begin(), registrations.end(), [](const auto& one) {
    return one->observation->wants(NSKeyValueObservingOptionOld | NSKeyValueObservingOptionPrior);
  });
}

/// All observers of an object, which stay readable as `PinnedObservers` do.
class PinnedList {
 public:
  explicit PinnedList(Observations& observations) noexcept
      : observations_(observations), list_(observations.pin()) {}
  ~PinnedList() { observations_.unpin(); }
  PinnedList(const PinnedList&) = delete;
  PinnedList& operator=(const PinnedList&) = delete;

  template <class Visit>
  void forEach(const Visit& visit) const {
    if (!list_) return;
    for (const Ref<KeyObservers>& key : *list_) {
      for (const Ref<Registration>& registration : key->registrations) visit(*registration);
    }
  }

 private:
  Observations& observations_;
  const KeyObserversList* const list_;
};

}  // namespace

KeyObservers::KeyObservers(const NSObject& object, const NSString& observedKey,
                           std::vector<Ref<Registration>> observers)
    : key(observedKey),
      keyHash(StringKey(key).hash()),
      registrations(std::move(observers)),
      looksBefore(lookBefore(registrations)),
      methodsHidden_(methodsHidden()),
      getter_(getterOf(object, key)) {}

KeyObservers::KeyObservers(const KeyObservers& before, std::vector<Ref<Registration>> observers)
    : key(before.key),
      keyHash(before.keyHash),
      registrations(std::move(observers)),
      looksBefore(lookBefore(registrations)),
      methodsHidden_(before.methodsHidden_),
      getter_(before.getter_) {}

Observations& Observations::of(const NSObject& object) {
  if (Observations* existing = ifAny(object)) return *existing;
  return static_cast<Observations&>(
      ObjectExtras::of(object).setObservationsOnce(makeRef<Observations>()));
}

Observations::~Observations() {
  begun_.clear();
  const std::unique_ptr<const KeyObserversList> list(list_.load());
  if (!list) return;
  for (const Ref<KeyObservers>& one : *list) {
    for (const Ref<Registration>& registration : one->registrations) {
      if (registration->level == 0) registration->observation->leavePath();
    }
  }
}

void Observations::freeReplaced() noexcept {
  Lists garbage;
  std::lock_guard guard(mutex_);
  if (readers_.load() != 0) return;
  garbage.swap(replaced_);
  hasReplaced_ = false;
}

Observations::Lists Observations::replaceList(std::unique_ptr<const KeyObserversList> list) {
  if (const KeyObserversList* old = list_.exchange(list.release())) replaced_.emplace_back(old);
  hasReplaced_ = true;
  Lists garbage;
  if (readers_.load() == 0) {
    garbage.swap(replaced_);
    hasReplaced_ = false;
  }
  return garbage;
}

void Observations::add(const NSObject& object, const NSString& key,
                       Ref<Registration> registration) {
  deactivateDead();
  Lists garbage;
  std::lock_guard guard(mutex_);
  const KeyObserversList* old = list_.load();
  auto list = std::make_unique<KeyObserversList>();
  if (old) *list = *old;
  const auto place =
      std::find_if(list->begin(), list->end(), [&](const auto& one) { return one->key == key; });
  if (place == list->end()) {
    list->push_back(makeRef<KeyObservers>(object, key, std::vector{std::move(registration)}));
  } else {
    std::vector<Ref<Registration>> registrations = (*place)->registrations;
    registrations.push_back(std::move(registration));
    *place = makeRef<KeyObservers>(object, key, std::move(registrations));
  }
  garbage = replaceList(std::move(list));
}

void Observations::deactivateDead() {
  {
    std::lock_guard guard(mutex_);
    if (++additions_ < nextCheck_) return;
  }
  std::size_t living = 0;
  PinnedList(*this).forEach([&](Registration& one) {
    if (one.observation->isObserverAlive()) {
      ++living;
    } else {
      one.isActive = false;
    }
  });
  {
    std::lock_guard guard(mutex_);
    additions_ = living;
    nextCheck_ = 2 * living + 8;
  }
  removeInactive();
}

void Observations::removeInactive() {
  Lists garbage;
  std::lock_guard guard(mutex_);
  const KeyObserversList* old = list_.load();
  if (!old) return;
  auto list = std::make_unique<KeyObserversList>();
  for (const Ref<KeyObservers>& key : *old) {
    std::vector<Ref<Registration>> active;
    std::copy_if(key->registrations.begin(), key->registrations.end(), std::back_inserter(active),
                 [](const auto& one) { return one->isActive.load(); });
    if (active.size() == key->registrations.size()) {
      list->push_back(key);
    } else if (!active.empty()) {
      list->push_back(makeRef<KeyObservers>(*key, std::move(active)));
    }
  }
  garbage = replaceList(std::move(list));
}

Ref<Observation> Observations::remove(const NSKeyValueObserver* observer, const NSString& keyPath,
                                      const std::optional<void*>& context) {
  Registration* latest = nullptr;
  const PinnedList pinned(*this);
  pinned.forEach([&](Registration& one) {
    if (one.level == 0 && one.isActive && one.observation->isOf(observer, keyPath, context))
      latest = &one;
  });
  if (!latest || !latest->isActive.exchange(false)) return nullptr;
  removeInactive();
  return latest->observation;
}

void Observations::remove(const Observation& observation, std::size_t level) {
  PinnedList(*this).forEach([&](Registration& one) {
    if (one.observation.get() == &observation && one.level == level) one.isActive = false;
  });
  removeInactive();
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
