#pragma once

#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Runtime/SEL.h>

#include <concepts>
#include <cstddef>

namespace zeb {

namespace detail {
class CallbackTable;
}

/// Keeps blocks by observer and calls all of them when it is fired. Observers are held weakly and
/// distinguished by identity: one that is destroyed takes its blocks with it, from the next firing
/// on.
///
/// Any thread. Additions and removals take effect asynchronously but in order: a firing after them,
/// on the same thread, sees them. Blocks are called on the firing thread, observer by observer in
/// the order in which the observers came, while nothing is locked: they may add, remove and fire,
/// and what they add or remove counts from the next firing on. So does the death of an observer: a
/// firing collects the blocks of the observers that are alive when it begins and calls all of them.
/// Blocks are not given their observer, and a block that uses it must hold it weakly. Blocks made
/// from selectors and member functions do so and do nothing once their observer is gone.
class ZEBCallbackDispatcher : public NSObject {
 public:
  /// Gets the user info, which may be nil.
  using CallbackBlock = Block<void(const Value& userInfo)>;

  ZEBCallbackDispatcher();
  ~ZEBCallbackDispatcher() override;

  /// "ZEBCallbackDispatcher", with everything here by its selectors: addObserver:usingBlock:,
  /// addObserver:selector: and so on. "init" and "new" are class methods there, and a block travels
  /// as Runtime/BlockConversion.h says.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  /// Adds a block to the observer's. Nothing when either is nil.
  void addObserver(const Ref<NSObject>& observer, CallbackBlock block);
  void addObserver(const Ref<NSObject>&, std::nullptr_t) noexcept {}
  /// Adds a block that sends the selector, with the user info if it takes an argument, to the
  /// observer.
  void addObserver(const Ref<NSObject>& observer, SEL selector);
  /// Adds a block that calls the member function.
  template <class Observer, class Class, class Parameter>
    requires std::derived_from<Observer, Class>
  void addObserver(const Ref<Observer>& observer, void (Class::*method)(Parameter)) {
    if (!method) return;
    addObserver(observer,
                CallbackBlock([weak = WeakRef<Observer>(observer), method](const Value& userInfo) {
                  if (const Ref<Observer> alive = weak.lock()) (alive.get()->*method)(userInfo);
                }));
  }

  /// Drops the observer and all its blocks; nothing when it is unknown.
  void removeObserver(const Ref<NSObject>& observer);

  void fire() { fireWithUserInfo(nullptr); }
  /// All blocks get the same user info, whatever the caller's variable is set to meanwhile. What a
  /// block throws goes to the caller; the blocks after it are not called.
  void fireWithUserInfo(Value userInfo);

 private:
  const Ref<detail::CallbackTable> observerToBlocksTable_;
};

}  // namespace zeb
