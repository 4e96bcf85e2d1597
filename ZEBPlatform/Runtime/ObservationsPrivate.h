#pragma once

#include <ZEBPlatform/Concurrency/detail/SnapshotPointer.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Runtime/Class.h>
#include <ZEBPlatform/Runtime/NSKeyValueCoding.h>
#include <ZEBPlatform/Runtime/NSKeyValueObserving.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <unordered_map>
#include <vector>

namespace zeb::detail {

/// One addition of an observer. Along a key path it keeps one registration on every object of the path and
/// moves these when an object on the way is replaced.
class Observation final : public NSObject {
 public:
  Observation(const Ref<NSObject>& object, const ProtocolRef<NSKeyValueObserver>& observer,
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

  /// Moves the registrations beyond the first object to the objects that are on the path now.
  void followPath();
  /// Takes them all back, for good.
  void leavePath();

 private:
  /// Under the lock. Answers references that have to be released after it.
  std::vector<Ref<NSObject>> moveTo(const std::vector<Ref<NSObject>>& objects);

  WeakProtocolRef<NSKeyValueObserver> observer_;
  const NSKeyValueObserver* const
      observerAddress_;  ///< also of an observer that is being destroyed
  const NSString keyPath_;
  std::vector<NSString> keys_;
  const NSKeyValueObservingOptions options_;
  void* const context_;

  WeakRef<NSObject> object_;
  std::mutex pathMutex_;  ///< guards what follows
  std::vector<WeakRef<NSObject>> objectsOnPath_;
  std::uint64_t latestMove_ = 0;
  bool hasLeft_ = false;
};

/// An observation's claim on one key of one object.
struct Registration final : NSObject {
  Registration(Ref<Observation> whose, std::size_t levelOfObject) noexcept
      : observation(std::move(whose)), level(levelOfObject) {}

  /// Whether the key is the last of the observation's path.
  bool isLast() const noexcept { return observation->isLast(level); }
  const NSString& key() const noexcept { return observation->keyAt(level); }
  /// What it is found by when it is removed: the observer, further along a path the observation.
  const void* owner() const noexcept {
    if (level == 0) return observation->observerAddress();
    return observation.get();
  }

  const Ref<Observation> observation;
  const std::size_t level;  ///< of the object on the observation's path
  std::atomic<bool> isActive{true};

  // The active registrations of the same owner on the same object, under the object's lock.
  Registration* older = nullptr;
  Registration* newer = nullptr;
};

/// Who observes a key of an object, in the order of their adding. Grows in place up to its capacity; who has
/// been removed stays there, inactive.
class KeyObservers final : public NSObject {
 public:
  KeyObservers(const NSObject& object, const NSString& observedKey);
  /// Those who are still active, with room for as many more.
  explicit KeyObservers(const KeyObservers& before);

  const NSString& key() const noexcept { return key_; }
  bool isFor(const StringKey& other) const noexcept {
    return other.hash() == keyHash_ && other.matches(key_.text());
  }
  std::span<const Ref<Registration>> registrations() const noexcept {
    return {slots_.get(), count_.load(std::memory_order_acquire)};
  }
  /// Whether one of the registrations read before wants to know the value before a change, or of the change
  /// beforehand.
  bool looksBefore() const noexcept { return looksBefore_.load(std::memory_order_relaxed); }

  /// The object's value under the key.
  Value valueIn(const Value& object) const {
    if (!getter_ || methodsHidden_ != methodsHidden()) return valueForKey(object, key_);
    const IMP& implementation = *getter_->implementation.load(std::memory_order_acquire);
    return implementation(object, getter_->selector, {});
  }

  // Under the owner's lock.
  bool isFull() const noexcept { return registrations().size() == capacity_; }
  void append(Ref<Registration> registration);
  /// How many have become inactive since the last counting.
  std::size_t inactive = 0;

 private:
  const NSString key_;
  const std::uint32_t keyHash_;
  /// The getter, as long as no method was added that might hide it.
  const std::uint64_t methodsHidden_;
  const Method getter_;  ///< null when the key is no property's

  const std::size_t capacity_;
  const std::unique_ptr<Ref<Registration>[]> slots_;
  std::atomic<std::size_t> count_{0};
  std::atomic<bool> looksBefore_{false};
};

/// Everything registered on one object. Who changes a property reads the list without a lock; it is replaced
/// when a part has to grow or shrink, and a replaced one lives as long as its own readers.
class Observations final : public NSObject {
 public:
  static Observations& of(const NSObject& object);
  static Observations* ifAny(const NSObject& object) noexcept {
    const ObjectExtras* extras = ObjectExtras::ifAny(object);
    return extras ? static_cast<Observations*>(extras->observations()) : nullptr;
  }
  Observations() = default;
  ~Observations() override;

  void add(const NSObject& object, const NSString& key, Ref<Registration> registration);
  /// Removes the latest observation of the object that fits, and answers it, or nil.
  Ref<Observation> remove(const NSKeyValueObserver* observer, const NSString& keyPath,
                          const std::optional<void*>& context);
  /// Removes the observation's registration for this level of its path.
  void remove(const Observation& observation, std::size_t level);
  /// Forgets those who died.
  void removeDead();

  /// The list as it is now; empty for none.
  SnapshotPointer<KeyObserversList>::Pin pin() noexcept { return list_.pin(); }

  /// Changes that began as one call and will end as another.
  void begin(std::unique_ptr<ObservedChange> change);
  std::unique_ptr<ObservedChange> takeBegun(const StringKey& key);

 private:
  /// A list that was replaced, to be let go outside the lock.
  using Replaced = SnapshotPointer<KeyObserversList>::Pin;
  struct Begun {
    std::thread::id thread;
    std::unique_ptr<ObservedChange> change;
  };

  /// Under the lock. A part that is not there (null) is added; one that has become empty is left out.
  [[nodiscard]] Replaced replacePart(const KeyObservers* part, Ref<KeyObservers> by);

  // Under the lock.
  KeyObservers* partFor(const NSString& key) const noexcept;
  void deactivate(Registration& registration);

  template <class Matches>
  Ref<Registration> removeLatest(const void* owner, const Matches& matches);

  SnapshotPointer<KeyObserversList> list_;
  std::mutex mutex_;  ///< guards what follows, and changes of the list
  std::unordered_map<const void*, Registration*> latest_;  ///< active registrations by owner
  std::vector<Begun> begun_;
  std::size_t additions_ = 0;
  std::size_t nextCheck_ = 8;  ///< after how many additions dead observers are looked for
};

inline PinnedObservers::PinnedObservers(Observations* observations, const StringKey& key) noexcept {
  if (!observations) return;
  list_ = observations->pin();
  if (!list_) return;
  for (const Ref<KeyObservers>& one : *list_) {
    if (!one->isFor(key)) continue;
    observers_ = one.get();
    return;
  }
}

inline PinnedObservers::~PinnedObservers() = default;

}  // namespace zeb::detail
