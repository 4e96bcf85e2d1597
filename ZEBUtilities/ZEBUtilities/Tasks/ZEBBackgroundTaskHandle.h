#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/ProtocolRef.h>

namespace zeb {

/// A protocol (see `ProtocolRef`): is told when a background task's handle goes, so that the task can be ended.
class ZEBBackgroundTaskHandleDelegate {
 public:
  /// On the thread that released the handle's last reference. Must not throw.
  virtual void backgroundTaskHandleWillBeDeallocated(const NSString& identifier) = 0;

 protected:
  ~ZEBBackgroundTaskHandleDelegate() = default;
};

/// A token for a background task, which lasts as long as somebody holds the token. The delegate may be
/// changed by one thread at a time.
class ZEBBackgroundTaskHandle : public NSObject {
 public:
  ZEBBackgroundTaskHandle() = delete;
  ZEBBackgroundTaskHandle(const NSString& identifier, const NSString& name,
                          const ProtocolRef<ZEBBackgroundTaskHandleDelegate>& delegate);
  /// Tells the delegate, if it still exists.
  ~ZEBBackgroundTaskHandle() override;

  /// "ZEBBackgroundTaskHandle", with everything here by its selectors; the initialiser is a class method
  /// there, and a delegate an object that implements the protocol.
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
