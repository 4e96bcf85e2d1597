#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Memory/detail/ItemBlock.h>
#include <ZEBPlatform/Memory/detail/ObjectExtras.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <utility>

namespace zeb {

namespace {

/// Compares posted objects with the one that an observer asked for. An object is known by its extras, which
/// outlive it: a later one at the same address has others.
class ObjectFilter {
 public:
  explicit ObjectFilter(const Value& object)
      : value_(object.isObject() ? Value() : object), object_(object.object()) {
    if (object.isObject()) extras_ = Ref(&detail::ObjectExtras::of(*object.objectPointer()));
  }

  bool isSameAs(const Value& object) const noexcept {
    if (object.isObject()) {
      return extras_ && extras_.get() == detail::ObjectExtras::ifAny(*object.objectPointer());
    }
    return !extras_ && value_.isIdenticalTo(object);
  }
  bool admits(const Value& posted) const noexcept {
    return (value_.isNil() && !extras_) || isSameAs(posted);
  }
  /// Nil when nothing can be admitted any more.
  Ref<NSObject> object() const noexcept { return object_.lock(); }
  bool isForObject() const noexcept { return static_cast<bool>(extras_); }

 private:
  Value value_;
  WeakRef<NSObject> object_;
  Ref<detail::ObjectExtras> extras_;
};

constexpr std::size_t smallestSweep = 64;

const void* identity(const NSObject& observer) { return &detail::ObjectExtras::of(observer); }

}  // namespace

/// One observer's wish. It is its own observer, and the token, when it was made for a block alone.
class NSNotificationCenter::Registration final : public NSObject {
 public:
  Registration(const NSString& name, const Ref<NSObject>& observer, const Value& object,
               const Ref<NSOperationQueue>& queue, Handler block)
      : name_(name.copy()),
        observer_(observer),
        filter_(object),
        queue_(queue),
        block_(std::move(block)) {}

  /// What it stands under in the table of observers: an identity that outlives the observer.
  const void* owner = nullptr;
  /// Where it stands among its owner's. Under the centre's lock.
  std::size_t place = 0;

  /// The name that it is for, or nil.
  const NSString& name() const noexcept { return name_; }
  const ObjectFilter& filter() const noexcept { return filter_; }
  void setRemoved() noexcept { isRemoved_.store(true, std::memory_order_release); }
  bool isRemoved() const noexcept { return isRemoved_.load(std::memory_order_acquire); }
  /// To be called without the centre's lock: what the block keeps may come back here when it dies.
  void releaseBlock() { block_.release(); }

  /// False when the observer was found dead.
  bool deliver(const Ref<NSNotification>& notification) {
    if (isRemoved() || !filter_.admits(notification->object())) return true;
    if (!queue_) return call(notification);
    queue_->addOperationWithBlock([self = Ref(this), notification] { self->call(notification); });
    return true;
  }

  /// Whether it can never be called again. What it locked to find out is left in `alive`, because releasing
  /// may run anybody's destructor.
  bool isDead(std::vector<Ref<NSObject>>& alive) const {
    if (!observer_.isEmpty()) alive.push_back(observer_.lock());
    const bool hasObserver = observer_.isEmpty() || alive.back();
    if (!hasObserver || !filter_.isForObject()) return !hasObserver;
    alive.push_back(filter_.object());
    return !alive.back();
  }

 private:
  bool call(const Ref<NSNotification>& notification) {
    if (isRemoved()) return true;
    const Ref<NSObject> observer = observer_.lock();
    if (!observer && !observer_.isEmpty()) return false;
    if (const Handler block = block_.get()) block(notification);
    return true;
  }

  const NSString name_;
  const WeakRef<NSObject> observer_;  ///< empty for a token
  const ObjectFilter filter_;
  const Ref<NSOperationQueue> queue_;
  detail::ItemBlock<void(const Ref<NSNotification>&)> block_;
  std::atomic<bool> isRemoved_{false};
};

/// The registrations for one name. Posts read it without the lock; whoever changes it meanwhile copies it.
/// Removed ones stay until they are half of it, so that removing is quick.
struct NSNotificationCenter::List final : NSObject {
  List() = default;
  explicit List(const List& same)
      : NSObject(), registrations(same.registrations), gaps(same.gaps) {}
  std::vector<Ref<Registration>> registrations;
  std::size_t gaps = 0;  ///< that are removed
};

NSNotificationCenter::NSNotificationCenter() : countForSweep_(smallestSweep) {}
NSNotificationCenter::~NSNotificationCenter() = default;

const Ref<NSNotificationCenter>& NSNotificationCenter::defaultCenter() {
  // Never destroyed: threads may post while the process ends.
  static const auto* center = new Ref(makeRef<NSNotificationCenter>());
  return *center;
}

void NSNotificationCenter::addObserver(const Ref<NSObject>& observer, Handler block,
                                       const NSString& name, const Value& object) {
  if (!observer || !block) return;
  add(identity(*observer),
      makeRef<Registration>(name, observer, object, nullptr, std::move(block)));
}

Ref<NSObject> NSNotificationCenter::addObserverForName(const NSString& name, const Value& object,
                                                       const Ref<NSOperationQueue>& queue,
                                                       Handler block) {
  if (!block) return nullptr;
  auto token = makeRef<Registration>(name, nullptr, object, queue, std::move(block));
  add(identity(*token), token);
  return token;
}

void NSNotificationCenter::add(const void* observer, const Ref<Registration>& registration) {
  bool isTimeToSweep = false;
  {
    std::lock_guard guard(mutex_);
    Ref<List>& list = listsByName_[registration->name()];
    if (!list) {
      list = makeRef<List>();
    } else if (!list->isUniquelyReferenced()) {
      list = makeRef<List>(*list);
    }
    registration->owner = observer;
    list->registrations.push_back(registration);
    auto& own = registrationsOf_[observer];
    registration->place = own.size();
    own.push_back(registration);
    isTimeToSweep = ++count_ >= countForSweep_;
  }
  if (isTimeToSweep) removeDead();
}

void NSNotificationCenter::removeObserver(const Ref<NSObject>& observer, const NSString& name,
                                          const Value& object) {
  if (!observer) return;
  Removed removed;
  {
    std::lock_guard guard(mutex_);
    const auto own = registrationsOf_.find(detail::ObjectExtras::ifAny(*observer));
    if (own == registrationsOf_.end()) return;
    const auto isUnwanted = [&](const Registration& one) {
      return (name.isNil() || one.name() == name) &&
             (object.isNil() || one.filter().isSameAs(object));
    };
    const auto named = name.isNil() ? listsByName_.end() : listsByName_.find(name);
    if (!name.isNil() && named == listsByName_.end()) return;
    // Either the observer or the name may have very many.
    if (name.isNil() || own->second.size() <= named->second->registrations.size()) {
      removeFrom(own, removed, isUnwanted);
    } else {
      const List& list = *removed.outdatedLists.emplace_back(named->second);
      for (const Ref<Registration>& one : list.registrations) {
        if (one->owner != own->first || one->isRemoved() || !isUnwanted(*one)) continue;
        removeOne(own->second, one, removed);
      }
      if (own->second.empty()) registrationsOf_.erase(own);
    }
  }
  releaseBlocks(removed);
}

void NSNotificationCenter::removeDead() {
  std::vector<Ref<NSObject>> alive;
  Removed removed;
  {
    std::lock_guard guard(mutex_);
    for (auto own = registrationsOf_.begin(); own != registrationsOf_.end();) {
      own = removeFrom(own, removed, [&](const Registration& one) { return one.isDead(alive); });
    }
    countForSweep_ = std::max(smallestSweep, 2 * count_);
  }
  releaseBlocks(removed);
}

/// Removes some of an observer's registrations. Answers the next observer.
template <class Predicate>
NSNotificationCenter::Registrations::iterator NSNotificationCenter::removeFrom(
    Registrations::iterator own, Removed& removed, const Predicate& isUnwanted) {
  for (std::size_t place = own->second.size(); place-- > 0;) {
    const Ref<Registration> one = own->second[place];
    if (isUnwanted(*one)) removeOne(own->second, one, removed);
  }
  return own->second.empty() ? registrationsOf_.erase(own) : std::next(own);
}

/// Removes one of an observer's registrations; the last one takes its place.
void NSNotificationCenter::removeOne(OwnRegistrations& own, const Ref<Registration>& one,
                                     Removed& removed) {
  own.back()->place = one->place;
  std::swap(own[one->place], own.back());
  removed.registrations.push_back(std::move(own.back()));
  own.pop_back();
  Registration& registration = *removed.registrations.back();
  registration.setRemoved();
  --count_;
  noteGap(listsByName_.find(registration.name()), removed);
}

void NSNotificationCenter::noteGap(Lists::iterator list, Removed& removed) {
  Ref<List>& entries = list->second;
  if (2 * ++entries->gaps < entries->registrations.size()) return;
  auto rest = makeRef<List>();
  std::ranges::copy_if(entries->registrations, std::back_inserter(rest->registrations),
                       [](const Ref<Registration>& one) { return !one->isRemoved(); });
  removed.outdatedLists.push_back(entries);
  if (rest->registrations.empty()) {
    listsByName_.erase(list);
  } else {
    entries = std::move(rest);
  }
}

void NSNotificationCenter::releaseBlocks(const Removed& removed) {
  for (const Ref<Registration>& registration : removed.registrations) registration->releaseBlock();
}

void NSNotificationCenter::postNotification(const Ref<NSNotification>& notification) {
  if (!notification) raiseInvalidArgument("there is no notification to post");
  const Ref<NSNotification> posted = notification;  // an observer may drop the caller's
  const NSString names[] = {posted->name(), nullptr};
  Ref<List> lists[2];
  {
    std::lock_guard guard(mutex_);
    for (const std::size_t index : {0u, 1u}) {
      const auto found = listsByName_.find(names[index]);
      if (found != listsByName_.end()) lists[index] = found->second;
    }
  }
  std::vector<Ref<Registration>> dead;
  for (const Ref<List>& list : lists) {
    if (!list) continue;
    for (const Ref<Registration>& registration : list->registrations) {
      if (!registration->deliver(posted)) dead.push_back(registration);
    }
  }
  if (dead.empty()) return;
  Removed removed;
  {
    std::lock_guard guard(mutex_);
    for (const Ref<Registration>& registration : dead) {
      const auto own = registrationsOf_.find(registration->owner);
      if (own == registrationsOf_.end() || registration->isRemoved()) continue;
      removeOne(own->second, registration, removed);
      if (own->second.empty()) registrationsOf_.erase(own);
    }
  }
  releaseBlocks(removed);
}

void NSNotificationCenter::postNotificationName(const NSString& name, const Value& object,
                                                const NSDictionary& userInfo) {
  postNotification(makeRef<NSNotification>(name, object, userInfo));
}

}  // namespace zeb
