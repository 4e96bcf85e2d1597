#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/StringKey.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/ProtocolRef.h>
#include <ZEBPlatform/Runtime/KeyValueChange.h>
#include <ZEBPlatform/Runtime/ObservedChange.h>

#include <cstdint>
#include <optional>

/// Notification of observers when a property of an object changes.
///
/// The runtime notifies of the changes that it makes itself: `setValueForKey`, and `send` of a
/// setter. A class whose C++ setters must notify too registers the property with
/// `KeyValueNotification::manual` and puts a `KeyValueChangeScope` around each change.
///
/// Observers are called on the thread that makes the change, in the order in which they were added,
/// while no lock is held. They may add, remove, change and release whatever they like: an observer
/// that is removed meanwhile is not called any more (a call that has begun on another thread goes
/// on), and one that is added is notified of the next change. An exception that an observer throws
/// goes to the code that makes the change; the observers after it are not called.
///
/// Neither side is kept alive. A dead observer is not called. When the observed object dies, its
/// observers get no more notifications and need not be removed.
namespace zeb {

using NSKeyValueObservingOptions = std::uintptr_t;
/// Pass the value after the change, or the one before it.
inline constexpr NSKeyValueObservingOptions NSKeyValueObservingOptionNew = 0x01;
inline constexpr NSKeyValueObservingOptions NSKeyValueObservingOptionOld = 0x02;
/// Notify once immediately, while the observer is added.
inline constexpr NSKeyValueObservingOptions NSKeyValueObservingOptionInitial = 0x04;
/// Notify before the change too.
inline constexpr NSKeyValueObservingOptions NSKeyValueObservingOptionPrior = 0x08;

/// The protocol of observers (see `ProtocolRef`).
class NSKeyValueObserver {
 public:
  virtual void observeValueForKeyPath(const NSString& keyPath, const Value& object,
                                      const KeyValueChange& change, void* context) = 0;

 protected:
  ~NSKeyValueObserver() = default;
};

/// Notifies `observer` of changes of the object's value under the key path. Along a path
/// "owner.name" these are changes of the name and of the owner. `context` is passed through. Any
/// thread. Does nothing if object, observer or path is nil. An observer that is added twice is
/// notified twice.
void addObserver(const Ref<NSObject>& object, const ProtocolRef<NSKeyValueObserver>& observer,
                 const NSString& keyPath, NSKeyValueObservingOptions options,
                 void* context = nullptr);

/// Removes the latest such addition; the second form the latest one with this context. Throws
/// NSException (NSRangeException) if there is no such addition. Does nothing for a nil object. Any
/// thread.
void removeObserver(const Ref<NSObject>& object, const ProtocolRef<NSKeyValueObserver>& observer,
                    const NSString& keyPath);
void removeObserver(const Ref<NSObject>& object, const ProtocolRef<NSKeyValueObserver>& observer,
                    const NSString& keyPath, void* context);

/// Encloses a change of the value under `key`: observers are notified when the scope ends. On an
/// unobserved object it costs one atomic load.
///
///     void setTitle(const NSString& title) {
///       const KeyValueChangeScope change(*this, "title");
///       title_ = title;
///     }
///
/// The scope notifies the observers that were there when it began, also if it is left by an
/// exception, because the value may have changed before. Exceptions of observers and getters come
/// out of the scope's end, unless another exception is under way.
class KeyValueChangeScope {
 public:
  KeyValueChangeScope(const NSObject& object, const StringKey& key) {
    if (detail::isObserved(object)) begin(object, key);
  }
  ~KeyValueChangeScope() noexcept(false) {
    if (change_) end();
  }
  KeyValueChangeScope(const KeyValueChangeScope&) = delete;
  KeyValueChangeScope& operator=(const KeyValueChangeScope&) = delete;

 private:
  void begin(const NSObject& object, const StringKey& key);
  void end();

  std::optional<detail::ObservedChange> change_;
};

/// The same as a pair of calls, which must match, on one thread. A second call without a first does
/// nothing. Prefer the scope: it can't be forgotten, and is faster.
void willChangeValueForKey(const Ref<NSObject>& object, const StringKey& key);
void didChangeValueForKey(const Ref<NSObject>& object, const StringKey& key);

}  // namespace zeb
