#pragma once

#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>

namespace zeb {

/// Calls a block when it is destroyed; attached to another object, when that one is destroyed.
///
/// The callback runs on the thread that releases the object last, while the object is being
/// destroyed: it must not use the object, and must not throw. One hook belongs to one thread at a
/// time.
class ZEBDeallocHook : public NSObject {
 public:
  explicit ZEBDeallocHook(Block<void()> callback) noexcept;
  ~ZEBDeallocHook() override;

  /// "ZEBDeallocHook", with everything here by its selectors; the initialiser is a class method
  /// there, and blocks travel as Runtime/BlockConversion.h says.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  /// Attaches a hook to the object under the key, an address that the caller owns. Destroys the
  /// hook that was there, which calls that one's callback. A nil object does nothing and calls
  /// nothing. Any thread.
  static void attachTo(const Ref<NSObject>& object, const void* key, Block<void()> callback);
  /// Removes the hook that is under the key now, without calling anything. Does nothing if there is
  /// none. A hook that another thread attaches meanwhile is either removed or stays as it is. Any
  /// thread.
  static void unattachFrom(const Ref<NSObject>& object, const void* key);

  const Block<void()>& callback() const noexcept { return callback_; }
  void setCallback(Block<void()> callback) noexcept { callback_ = std::move(callback); }
  void removeCallback() noexcept { callback_ = nullptr; }

 private:
  Block<void()> callback_;
};

}  // namespace zeb
