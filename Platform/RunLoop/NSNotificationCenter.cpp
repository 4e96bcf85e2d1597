#include <Foundation/NSException.h>
#include <Memory/ObjectExtras.h>
#include <RunLoop/NSNotificationCenter.h>

#include <algorithm>
#include <atomic>
#include <functional>
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
  Registration(const Ref<NSObject>& observer, const Value& object,
               const Ref<NSOperationQueue>& queue, Handler block)
      : observer_(observer), filter_(object), queue_(queue), block_(std::move(block)) {}

  const ObjectFilter& filter() const noexcept { return filter_; }
  void setRemoved() noexcept { isRemoved_.store(true, std::memory_order_release); }
  bool isRemoved() const noexcept { return isRemoved_.load(std::memory_order_acquire); }

  void deliver(const Ref<NSNotification>& notification) {
    if (isRemoved() || !filter_.admits(notification->object())) return;
    if (!queue_) return call(notification);
    queue_->addOperationWithBlock([self = Ref(this), notification] { self->call(notification); });
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
  void call(const Ref<NSNotification>& notification) {
    if (isRemoved()) return;
    const Ref<NSObject> observer = observer_.lock();
    if (observer || observer_.isEmpty()) {
      block_(notification);
    } else {
      setRemoved();  // it has died
    }
  }

  const WeakRef<NSObject> observer_;  ///< empty for a token
  const ObjectFilter filter_;
  const Ref<NSOperationQueue> queue_;
  const Handler block_;
  std::atomic<bool> isRemoved_{false};
};

struct NSNotificationCenter::Entry {
  const void* observer;  ///< its identity, which outlives it
  Ref<Registration> registration;
};

/// The registrations for one name. Posts read it without the lock; whoever changes it meanwhile copies it.
struct NSNotificationCenter::List final : NSObject {
  List() = default;
  explicit List(const std::vector<Entry>& same) : entries(same) {}
  std::vector<Entry> entries;
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
  add(name, identity(*observer),
      makeRef<Registration>(observer, object, nullptr, std::move(block)));
}

Ref<NSObject> NSNotificationCenter::addObserverForName(const NSString& name, const Value& object,
                                                       const Ref<NSOperationQueue>& queue,
                                                       Handler block) {
  if (!block) return nullptr;
  auto token = makeRef<Registration>(nullptr, object, queue, std::move(block));
  add(name, identity(*token), token);
  return token;
}

void NSNotificationCenter::add(const NSString& name, const void* observer,
                               Ref<Registration> registration) {
  bool isTimeToSweep = false;
  {
    std::lock_guard guard(mutex_);
    Ref<List>& list = listsByName_[name.copy()];
    if (!list) {
      list = makeRef<List>();
    } else if (!list->isUniquelyReferenced()) {
      list = makeRef<List>(list->entries);
    }
    list->entries.push_back({observer, std::move(registration)});
    isTimeToSweep = ++count_ >= countForSweep_;
  }
  if (isTimeToSweep) removeDead();
}

void NSNotificationCenter::removeObserver(const Ref<NSObject>& observer, const NSString& name,
                                          const Value& object) {
  if (!observer) return;
  const auto isUnwanted = [&, wanted = detail::ObjectExtras::ifAny(*observer)](const Entry& entry) {
    return entry.observer == wanted &&
           (object.isNil() || entry.registration->filter().isSameAs(object));
  };
  if (name.isNil()) {
    removeEntries(isUnwanted);
  } else {
    removeEntriesForName(name, isUnwanted);
  }
}

void NSNotificationCenter::removeDead() {
  std::vector<Ref<NSObject>> alive;
  removeEntries([&](const Entry& entry) { return entry.registration->isDead(alive); });
  std::lock_guard guard(mutex_);
  countForSweep_ = std::max(smallestSweep, 2 * count_);
}

template <class Predicate>
void NSNotificationCenter::removeEntries(const Predicate& isUnwanted) {
  std::vector<Entry> removed;  // released after the lock: a block's destruction may come back here
  std::lock_guard guard(mutex_);
  for (auto list = listsByName_.begin(); list != listsByName_.end();) {
    list = removeEntries(list, isUnwanted, removed);
  }
}

template <class Predicate>
void NSNotificationCenter::removeEntriesForName(const NSString& name, const Predicate& isUnwanted) {
  std::vector<Entry> removed;
  std::lock_guard guard(mutex_);
  const auto list = listsByName_.find(name);
  if (list != listsByName_.end()) removeEntries(list, isUnwanted, removed);
}

/// Answers the next list.
template <class Predicate>
NSNotificationCenter::Lists::iterator NSNotificationCenter::removeEntries(
    Lists::iterator list, const Predicate& isUnwanted, std::vector<Entry>& removed) {
  Ref<List>& entries = list->second;
  if (std::ranges::none_of(entries->entries, isUnwanted)) return std::next(list);
  if (!entries->isUniquelyReferenced()) entries = makeRef<List>(entries->entries);
  std::vector<Entry> wanted;
  for (Entry& entry : entries->entries) {
    if (isUnwanted(entry)) {
      entry.registration->setRemoved();
      removed.push_back(std::move(entry));
      --count_;
    } else {
      wanted.push_back(std::move(entry));
    }
  }
  entries->entries.swap(wanted);
  return entries->entries.empty() ? listsByName_.erase(list) : std::next(list);
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
  for (const std::size_t index : {0u, 1u}) {
    if (!lists[index]) continue;
    bool hasRemoved = false;
    for (const Entry& entry : lists[index]->entries) {
      entry.registration->deliver(posted);
      hasRemoved = hasRemoved || entry.registration->isRemoved();
    }
    // Those whose observers have died; others have been taken out already.
    if (hasRemoved) {
      removeEntriesForName(names[index],
                           [](const Entry& entry) { return entry.registration->isRemoved(); });
    }
  }
}

void NSNotificationCenter::postNotificationName(const NSString& name, const Value& object,
                                                const NSDictionary& userInfo) {
  postNotification(makeRef<NSNotification>(name, object, userInfo));
}

}  // namespace zeb
