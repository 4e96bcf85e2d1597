#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/ProtocolRef.h>

namespace zeb {

/// A protocol (see `ProtocolRef`). Is notified when a background task's handle is destroyed, so
/// that the task can be ended.
class ZEBBackgroundTaskHandleDelegate {
 public:
  /// Called on the thread that released the handle's last reference. Must not throw.
  virtual void backgroundTaskHandleWillBeDeallocated(const NSString& identifier) = 0;

 protected:
  ~ZEBBackgroundTaskHandleDelegate() = default;
};

/// A token for a background task: the task lasts as long as the token has an owner. The delegate
/// may be changed by one thread at a time.
class ZEBBackgroundTaskHandle : public NSObject {
 public:
  ZEBBackgroundTaskHandle() = delete;
  ZEBBackgroundTaskHandle(const NSString& identifier, const NSString& name,
                          const ProtocolRef<ZEBBackgroundTaskHandleDelegate>& delegate);
  /// Notifies the delegate, if it still exists.
  ~ZEBBackgroundTaskHandle() override;

  /// Registered as "ZEBBackgroundTaskHandle", with all functions here under their selectors. The
  /// initialiser is a class method there, and a delegate is an object that implements the protocol.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  const NSString& identifier() const noexcept { return identifier_; }
  const NSString& name() const noexcept { return name_; }

  /// Held weakly.
  ProtocolRef<ZEBBackgroundTaskHandleDelegate> delegate() const noexcept {
    return delegate_.lock();
  }
  void setDelegate(const ProtocolRef<ZEBBackgroundTaskHandleDelegate>& delegate) {
    delegate_ = delegate;
  }

 private:
  const NSString identifier_;
  const NSString name_;
  WeakProtocolRef<ZEBBackgroundTaskHandleDelegate> delegate_;
};

}  // namespace zeb
