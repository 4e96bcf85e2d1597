#pragma once

#include <ZEBPlatform/Concurrency/detail/KeptByThread.h>
#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/SnapshotPointer.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Memory/detail/ObserverIndex.h>
#include <ZEBPlatform/Runtime/Class.h>
#include <ZEBPlatform/Runtime/NSKeyValueCoding.h>
#include <ZEBPlatform/Runtime/NSKeyValueObserving.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace zeb::detail {

/// One addition of an observer. Along a key path it has one entry on every object of the path, and
/// moves these entries when an object on the path is replaced.
class KeyPathObservation final : public NSObject {
 public:
  KeyPathObservation(const Ref<NSObject>& object, const ProtocolRef<NSKeyValueObserver>& observer,
                     const NSString& keyPath, NSKeyValueObservingOptions options, void* context);

  const NSString& keyPath() const noexcept { return keyPath_; }
  bool wants(NSKeyValueObservingOptions option) const noexcept { return options_ & option; }
  bool isOf(const NSKeyValueObserver* observer, const NSString& keyPath,
            const std::optional<void*>& context) const noexcept;
  bool isObserverAlive() const noexcept { return observer_.isAlive(); }
  const NSKeyValueObserver* observerAddress() const noexcept { return observerAddress_; }

  const NSString& keyAt(std::size_t level) const noexcept { return keys_[level]; }
  bool isLast(std::size_t level) const noexcept { return level + 1 == keys_.size(); }
  /// Whether the path has more than one key.
  bool isAlongPath() const noexcept { return keys_.size() > 1; }
  /// The value at the end of the path, seen from the object at a level.
  Value valueFrom(const Value& object, std::size_t level) const;

  /// Calls the observer; false when it is dead.
  bool tell(const Value& object, const KeyValueChange& change) const {
    const ProtocolRef observer = observer_.lock();
    if (observer) observer->observeValueForKeyPath(keyPath_, object, change, context_);
    return static_cast<bool>(observer);
  }
  /// The object at the path's beginning, nil when it is dead. For paths of several keys.
  Value object() const { return object_.lock(); }

  /// Moves the entries beyond the first object to the objects that are on the path now.
  void followPath() ZEB_EXCLUDES(pathLock_);
  /// Removes these entries for good.
  void leavePath() ZEB_EXCLUDES(pathLock_);

 private:
  /// Answers references that have to be released without the lock.
  std::vector<Ref<NSObject>> moveTo(const std::vector<Ref<NSObject>>& objects)
      ZEB_REQUIRES(pathLock_);

  WeakProtocolRef<NSKeyValueObserver> observer_;
  /// Also the address of an observer that is being destroyed.
  const NSKeyValueObserver* const observerAddress_;
  const NSString keyPath_;
  std::vector<NSString> keys_;
  const NSKeyValueObservingOptions options_;
  void* const context_;

  WeakRef<NSObject> object_;
  Lock pathLock_;
  std::vector<WeakRef<NSObject>> objectsOnPath_ ZEB_GUARDED_BY(pathLock_);
  std::uint64_t latestMove_ ZEB_GUARDED_BY(pathLock_) = 0;
  bool hasLeft_ ZEB_GUARDED_BY(pathLock_) = false;
};

/// An observation's entry among the observers of one key of one object.
struct KeyObserver final : ObserverEntry {
  KeyObserver(Ref<KeyPathObservation> itsObservation, std::size_t levelOfObject) noexcept
      : observation(std::move(itsObservation)), level(levelOfObject) {}

  /// Whether the key is the last of the observation's path.
  bool isLast() const noexcept { return observation->isLast(level); }
  const NSString& key() const noexcept { return observation->keyAt(level); }
  bool isDead() const noexcept { return !observation->isObserverAlive(); }
  /// What it is found by when it is removed: the observer; further along a path the observation.
  const void* owner() const noexcept {
    if (level == 0) return observation->observerAddress();
    return observation.get();
  }

  const Ref<KeyPathObservation> observation;
  const std::size_t level;  ///< of the object on the observation's path
};

/// The observers of one key of an object.
class KeyObservers final : public ObserverArray<KeyObserver> {
 public:
  KeyObservers(const NSObject& object, const NSString& observedKey);
  /// A copy without removed entries.
  explicit KeyObservers(const KeyObservers& before);

  const NSString& key() const noexcept { return key_; }
  bool isFor(const StringKey& other) const noexcept {
    return other.hash() == keyHash_ && other.matches(key_.text());
  }
  /// Whether one of the entries that were read before needs the value before a change, or is to be
  /// called before it.
  bool looksBefore() const noexcept { return looksBefore_.load(std::memory_order_relaxed); }

  /// The object's value under the key.
  Value valueIn(const Value& object) const {
    if (!getter_ || methodsHidden_ != methodsHidden()) return valueForKey(object, key_);
    const IMP& implementation = *getter_->implementation.load(std::memory_order_acquire);
    return implementation(object, getter_->selector, {});
  }

  /// With the owner's lock held.
  void add(Ref<KeyObserver> entry) noexcept;

 private:
  const NSString key_;
  const std::uint32_t keyHash_;
  /// The getter, which may be called directly until a method is added that might hide it.
  const std::uint64_t methodsHidden_;
  const Method getter_;  ///< null if the key is not a property's name
  std::atomic<bool> looksBefore_{false};
};

/// All observers of one object. A thread that changes a property reads the list without a lock; the
/// list is replaced when a part has to grow or shrink, and a replaced list lives as long as its own
/// readers.
class ObjectObservers final : public NSObject {
 public:
  static ObjectObservers& of(const NSObject& object);
  static ObjectObservers* ifAny(const NSObject& object) noexcept {
    const ObjectExtras* extras = ObjectExtras::ifAny(object);
    return extras ? static_cast<ObjectObservers*>(extras->observers()) : nullptr;
  }
  ObjectObservers() = default;
  ~ObjectObservers() override;

  void add(const NSObject& object, const NSString& key, Ref<KeyObserver> entry) ZEB_EXCLUDES(lock_);
  /// Removes the object's newest observation that fits, and answers it, or nil.
  Ref<KeyPathObservation> remove(const NSKeyValueObserver* observer, const NSString& keyPath,
                                 const std::optional<void*>& context) ZEB_EXCLUDES(lock_);
  /// Removes the observation's entry for this level of its path.
  void remove(const KeyPathObservation& observation, std::size_t level) ZEB_EXCLUDES(lock_);
  /// Removes the entries of observers that have died.
  void removeDead() ZEB_EXCLUDES(lock_);

  /// Makes `pin` keep the current list readable; it becomes empty if there is no list.
  void pin(ListPin& pin) noexcept {
    if (!list_.isCurrent(pin.list)) pin.list = list_.pin();
  }

  /// Changes that begin by one call and end by another.
  void begin(std::unique_ptr<ObservedChange> change) ZEB_EXCLUDES(lock_);
  std::unique_ptr<ObservedChange> takeBegun(const StringKey& key) ZEB_EXCLUDES(lock_);

 private:
  /// Lists that were replaced. Their last readers may release entries, so it ends without the lock.
  using Replaced = std::vector<SnapshotPointer<KeyObserversList>::Pin>;
  struct Begun {
    std::thread::id thread;
    std::unique_ptr<ObservedChange> change;
  };

  KeyObservers* partFor(const NSString& key) const noexcept ZEB_REQUIRES(lock_);
  /// Replaces a part, or adds one to replace null. An empty part is left out.
  void replacePart(const KeyObservers* part, Ref<KeyObservers> replacement, Replaced& replaced)
      ZEB_REQUIRES(lock_);
  void removeDead(Replaced& replaced) ZEB_REQUIRES(lock_);
  void remove(KeyObserver& entry, Replaced& replaced) ZEB_REQUIRES(lock_);
  template <class Matches>
  Ref<KeyPathObservation> removeNewest(const void* owner, const Matches& matches)
      ZEB_EXCLUDES(lock_);

  SnapshotPointer<KeyObserversList> list_;  ///< changed with the lock held
  Lock lock_;
  ObserverIndex<KeyObserver> index_ ZEB_GUARDED_BY(lock_);
  std::vector<Begun> begun_ ZEB_GUARDED_BY(lock_);
};

inline PinnedObservers::PinnedObservers(ObjectObservers* observers, const StringKey& key) {
  if (!observers) return;
  pin_ = KeptByThread<ListPin>::take();
  if (!pin_) pin_ = std::make_unique<ListPin>();
  observers->pin(*pin_);
  if (!pin_->list) return;
  for (const Ref<KeyObservers>& one : pin_->list->parts) {
    if (!one->isFor(key)) continue;
    observers_ = one.get();
    return;
  }
}

inline PinnedObservers::~PinnedObservers() {
  if (!pin_) return;
  // Longer lists would take memory for entries that may have been removed long ago.
  constexpr std::size_t maxKeptCapacity = 64;
  if (pin_->list && pin_->list->capacity > maxKeptCapacity) pin_->list = {};
  KeptByThread<ListPin>::give(std::move(pin_));
}

}  // namespace zeb::detail
