#pragma once

#include <ZEBPlatform/Concurrency/detail/SnapshotPointer.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/StringKey.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/detail/ObjectExtras.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace zeb {
class KeyValueChange;
}

namespace zeb::detail {

class ObjectObservers;
class KeyObservers;
struct KeyObserver;

/// The observed keys of an object. The list is never changed, but its parts grow in place.
struct KeyObserversList {
  std::vector<Ref<KeyObservers>> parts;
  /// The number of entries that the parts have memory for.
  std::size_t capacity = 0;
};

/// Keeps one list readable. A thread keeps the pin of the list that it used last, because in most
/// cases it uses the same list next: then it needs no atomic change to pin it.
struct ListPin {
  SnapshotPointer<KeyObserversList>::Pin list;
};

/// Whether the object has observers, or had some.
inline bool isObserved(const NSObject& object) noexcept {
  const ObjectExtras* extras = ObjectExtras::ifAny(object);
  return extras && extras->observers();
}

/// The observers of a key of an object at one time. They stay readable while this lives, whatever
/// is added or removed meanwhile.
class PinnedObservers {
 public:
  PinnedObservers(ObjectObservers* observers, const StringKey& key);
  ~PinnedObservers();
  PinnedObservers(const PinnedObservers&) = delete;
  PinnedObservers& operator=(const PinnedObservers&) = delete;

  explicit operator bool() const noexcept { return observers_ != nullptr; }
  const KeyObservers* operator->() const noexcept { return observers_; }

 private:
  std::unique_ptr<ListPin> pin_;
  const KeyObservers* observers_ = nullptr;
};

/// One change of a key of an object, from before it to after it, for the observers that are there
/// when it begins.
class ObservedChange {
 public:
  /// Reads old values, and notifies the observers that asked for it before the change.
  ObservedChange(const NSObject& object, const StringKey& key);
  ~ObservedChange();
  ObservedChange(const ObservedChange&) = delete;
  ObservedChange& operator=(const ObservedChange&) = delete;

  /// Whether this key has observers.
  bool concernsAnybody() const noexcept { return static_cast<bool>(observers_); }
  bool isOf(const StringKey& key) const noexcept;

  /// Notifies the observers of the completed change.
  void tell();

  /// For a change that is not known to end: it must not keep its object alive.
  void releaseObject() noexcept {
    ownedObject_ = nullptr;
    object_ = &ownedObject_;
  }
  void retainObject(const NSObject& object) noexcept;

 private:
  const Value* retained(const NSObject& object) noexcept;
  bool isConcerned(const Ref<KeyObserver>& entry) const noexcept;
  bool isFirstOfPath(const Ref<KeyObserver>& entry) const noexcept;
  void prepare(const KeyObserver& entry);
  const Value* oldValueFor(const KeyObserver& entry) const noexcept;
  void tell(const KeyObserver& entry, const KeyValueChange& change);
  void tellAlongPath(const KeyObserver& entry);

  Value ownedObject_;  ///< nil if the call that this is in holds the object
  const Value* object_ = &ownedObject_;
  PinnedObservers observers_;  ///< let go before the object
  /// The observers that are there when the change begins.
  std::span<const Ref<KeyObserver>> entries_;
  std::optional<Value> oldValue_;
  /// For entries whose path continues from here.
  std::vector<std::pair<const KeyObserver*, Value>> oldValuesAlongPaths_;
  bool metDeadObserver_ = false;
};

}  // namespace zeb::detail
