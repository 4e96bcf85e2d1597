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

/// Being told when a property of an object changes.
///
/// The runtime tells of the changes that it makes itself: `setValueForKey`, and `send` of a setter. A class
/// whose C++ setters shall tell too registers the property with `KeyValueNotification::manual` and puts a
/// `KeyValueChangeScope` around each change.
///
/// Observers are called on the thread that makes the change, in the order in which they were added, while
/// no lock is held. They may add, remove, change and release whatever they like: an observer that is
/// removed meanwhile is not called any more (a call that has begun on another thread goes on), and one
/// that is added hears of the next change. An exception that an observer throws goes to whoever makes the
/// change; the observers after it are not called.
///
/// Neither side is kept alive. A dead observer is not called. When the observed object dies its observers
/// just hear no more, and there is nothing left to remove them from.
namespace zeb {

using NSKeyValueObservingOptions = std::uintptr_t;
/// Tell the value after the change, the one before it.
inline constexpr NSKeyValueObservingOptions NSKeyValueObservingOptionNew = 0x01;
inline constexpr NSKeyValueObservingOptions NSKeyValueObservingOptionOld = 0x02;
/// Tell once right away, while the observer is added.
inline constexpr NSKeyValueObservingOptions NSKeyValueObservingOptionInitial = 0x04;
/// Tell before the change as well.
inline constexpr NSKeyValueObservingOptions NSKeyValueObservingOptionPrior = 0x08;

/// A protocol (see `ProtocolRef`): is told of changes.
class NSKeyValueObserver {
 public:
  virtual void observeValueForKeyPath(const NSString& keyPath, const Value& object,
                                      const KeyValueChange& change, void* context) = 0;

 protected:
  ~NSKeyValueObserver() = default;
};

/// Has `observer` told of changes of the object's value under the key path. Along a path "owner.name" it is
/// told when the name changes and when the owner does. `context` is passed through. Any thread; nothing
/// when object, observer or path is nil. An observer that is added twice is told twice.
void addObserver(const Ref<NSObject>& object, const ProtocolRef<NSKeyValueObserver>& observer,
                 const NSString& keyPath, NSKeyValueObservingOptions options,
                 void* context = nullptr);

/// Takes back the latest such addition; the second form that with this context. Throws NSException
/// (NSRangeException) when there is none. Nothing for a nil object. Any thread.
void removeObserver(const Ref<NSObject>& object, const ProtocolRef<NSKeyValueObserver>& observer,
                    const NSString& keyPath);
void removeObserver(const Ref<NSObject>& object, const ProtocolRef<NSKeyValueObserver>& observer,
                    const NSString& keyPath, void* context);

/// Encloses a change of the value under `key`: observers are told of it when the scope ends, on an unobserved
/// object for the price of one look.
///
///     void setTitle(const NSString& title) {
///       const KeyValueChangeScope change(*this, "title");
///       title_ = title;
///     }
///
/// Told are those who observed when the scope began, also when it is left by an exception: the value may have
/// changed before. What observers and getters throw comes out of the scope's end, unless an exception is
/// already on its way.
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

/// The same as a pair of calls, which must match, on one thread. A second call without a first does nothing.
/// Prefer the scope: it can't be forgotten, and is faster.
void willChangeValueForKey(const Ref<NSObject>& object, const StringKey& key);
void didChangeValueForKey(const Ref<NSObject>& object, const StringKey& key);

}  // namespace zeb
