#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Memory/detail/ObjectExtras.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBPlatform/Notifications/ReleasablePrivate.h>

#include <utility>

namespace zeb {

namespace {

/// Compares posted objects with the one that an observer asked for. An object is identified by its
/// extras, which outlive it: a later object at the same address has others.
class ObjectFilter {
 public:
  explicit ObjectFilter(const Value& object)
      : admitsAll_(object.isNil()),
        value_(object.isObject() ? Value() : object),
        object_(object.object()) {
    if (object.isObject()) extras_ = Ref(&detail::ObjectExtras::of(*object.objectPointer()));
  }

  bool isSameAs(const Value& object) const {
    if (object.isObject()) {
      return extras_ && extras_.get() == detail::ObjectExtras::ifAny(*object.objectPointer());
    }
    return !extras_ && value_.get().isIdenticalTo(object);
  }
  bool admits(const Value& posted) const { return admitsAll_ || isSameAs(posted); }
  /// Whether its object has died, so that it admits nothing any more.
  bool isDead() const noexcept { return extras_ && !object_.isAlive(); }
  void release() { value_.release(); }

 private:
  const bool admitsAll_;
  detail::Releasable<Value> value_;
  WeakRef<NSObject> object_;
  Ref<detail::ObjectExtras> extras_;
};

/// An observer's identity in the index. It outlives the observer.
const void* identity(const NSObject& observer) { return &detail::ObjectExtras::of(observer); }

}  // namespace

/// One addition of an observer. It is its own observer, and the token, if it was made for a block
/// alone.
class NSNotificationCenter::Entry final : public detail::ObserverEntry {
 public:
  Entry(const NSString& name, const Ref<NSObject>& observer, const Value& object,
        const Ref<NSOperationQueue>& queue, Handler block)
      : name_(name.copy()),
        observer_(observer),
        filter_(object),
        call_(Call{queue, std::move(block)}) {}

  /// The name whose notifications are delivered; nil for every name.
  const NSString& name() const noexcept { return name_; }
  const ObjectFilter& filter() const noexcept { return filter_; }
  /// Releases all that it keeps alive, because snapshots and tokens may keep a removed entry. To be
  /// called without the centre's lock: what dies may call the centre.
  void releaseContents() {
    filter_.release();
    call_.release();
  }

  /// False if the observer has died.
  bool deliver(const Ref<NSNotification>& notification) {
    if (isRemoved() || !filter_.admits(notification->object())) return true;
    Call call = call_.get();
    if (!call.queue) return perform(std::move(call.block), notification);
    call.queue->addOperationWithBlock([self = Ref(this), notification] {
      // Read again, because it may have been removed meanwhile.
      self->perform(self->call_.get().block, notification);
    });
    return true;
  }

  /// Whether it can never be called again.
  bool isDead() const noexcept {
    return (!observer_.isEmpty() && !observer_.isAlive()) || filter_.isDead();
  }

 private:
  struct Call {
    Ref<NSOperationQueue> queue;  ///< nil: the posting thread
    Handler block;
  };

  bool perform(Handler&& block, const Ref<NSNotification>& notification) {
    if (isRemoved()) return true;
    const Ref<NSObject> observer = observer_.lock();
    if (!observer && !observer_.isEmpty()) return false;
    // Ends before the observer does.
    if (const Handler running = std::move(block)) running(notification);
    return true;
  }

  const NSString name_;
  const WeakRef<NSObject> observer_;  ///< empty for a token
  ObjectFilter filter_;
  detail::Releasable<Call> call_;
};

/// What a removal takes out. It is released without the lock, because blocks, filters and tokens
/// own objects whose destructors may call the centre.
struct NSNotificationCenter::Removed {
  ~Removed() {
    for (const Ref<Entry>& entry : entries) entry->releaseContents();
  }
  std::vector<Ref<Entry>> entries;
  std::vector<Ref<List::Array>> arrays;
};

NSNotificationCenter::NSNotificationCenter() = default;
NSNotificationCenter::~NSNotificationCenter() = default;

const Ref<NSNotificationCenter>& NSNotificationCenter::defaultCenter() {
  // Threads may post while the process ends.
  static const detail::NeverDestroyed<Ref<NSNotificationCenter>> center(
      makeRef<NSNotificationCenter>());
  return *center;
}

void NSNotificationCenter::addObserver(const Ref<NSObject>& observer, Handler block,
                                       const NSString& name, const Value& object) {
  if (!observer || !block) return;
  add(identity(*observer), makeRef<Entry>(name, observer, object, nullptr, std::move(block)));
}

Ref<NSObject> NSNotificationCenter::addObserverForName(const NSString& name, const Value& object,
                                                       const Ref<NSOperationQueue>& queue,
                                                       Handler block) {
  if (!block) return nullptr;
  auto token = makeRef<Entry>(name, nullptr, object, queue, std::move(block));
  add(identity(*token), token);
  return token;
}

void NSNotificationCenter::add(const void* observer, const Ref<Entry>& entry) {
  Removed removed;
  Ref<List::Array> replaced;
  const detail::LockGuard guard(lock_);
  if (index_.isRemovalDue()) {
    for (Entry* dead : index_.deadEntries()) remove(*dead, removed);
  }
  index_.reserve(observer);
  replaced = lists_[entry->name()].add(entry);
  index_.add(observer, *entry);
}

void NSNotificationCenter::removeObserver(const Ref<NSObject>& observer, const NSString& name,
                                          const Value& object) {
  if (!observer) return;
  Removed removed;
  const detail::LockGuard guard(lock_);
  const void* owner = detail::ObjectExtras::ifAny(*observer);
  const auto isUnwanted = [&](const Entry& entry) {
    return (name.isNil() || entry.name() == name) &&
           (object.isNil() || entry.filter().isSameAs(object));
  };
  const auto named = name.isNil() ? lists_.end() : lists_.find(name);
  if (!name.isNil() && named == lists_.end()) return;
  // The observer or the name may have very many entries: the shorter list is searched.
  if (name.isNil() || index_.countOf(owner) <= named->second.size()) {
    for (Entry *entry = index_.newestOf(owner), *older; entry; entry = older) {
      older = index_.olderThan(*entry);
      if (isUnwanted(*entry)) remove(*entry, removed);
    }
    return;
  }
  for (const Ref<Entry>& entry : named->second.snapshot()) {
    if (entry->isRemoved() || index_.ownerOf(*entry) != owner || !isUnwanted(*entry)) continue;
    remove(*entry, removed);
  }
}

void NSNotificationCenter::remove(Entry& entry, Removed& removed) {
  removed.entries.emplace_back(&entry);
  const auto list = lists_.find(entry.name());
  index_.remove(entry);
  if (auto replaced = list->second.remove(entry)) removed.arrays.push_back(std::move(replaced));
  if (list->second.isEmpty()) lists_.erase(list);
}

void NSNotificationCenter::postNotification(const Ref<NSNotification>& notification) {
  if (!notification) raiseInvalidArgument("there is no notification to post");
  // An observer may drop the caller's references.
  const Ref<NSNotificationCenter> self(this);
  const Ref<NSNotification> posted = notification;
  const NSString names[] = {posted->name(), nullptr};
  List::Snapshot snapshots[2];
  {
    const detail::LockGuard guard(lock_);
    for (const std::size_t index : {0u, 1u}) {
      const auto found = lists_.find(names[index]);
      if (found != lists_.end()) snapshots[index] = found->second.snapshot();
    }
  }
  std::vector<Ref<Entry>> dead;
  for (const List::Snapshot& snapshot : snapshots) {
    for (const Ref<Entry>& entry : snapshot) {
      if (!entry->deliver(posted)) dead.push_back(entry);
    }
  }
  if (dead.empty()) return;
  Removed removed;
  const detail::LockGuard guard(lock_);
  for (const Ref<Entry>& entry : dead) {
    if (!entry->isRemoved()) remove(*entry, removed);
  }
}

void NSNotificationCenter::postNotificationName(const NSString& name, const Value& object,
                                                const NSDictionary& userInfo) {
  postNotification(makeRef<NSNotification>(name, object, userInfo));
}

}  // namespace zeb
