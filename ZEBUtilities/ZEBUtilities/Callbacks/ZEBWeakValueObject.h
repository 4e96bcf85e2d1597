#pragma once

#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/WeakRef.h>

namespace zeb {

/// A box that holds one object weakly, so that collections can hold weak references. The value may
/// be read from any thread; setting it is for one thread at a time.
class ZEBWeakValueObject : public NSObject {
 public:
  explicit ZEBWeakValueObject(const Ref<NSObject>& value) : value_(value) {}
  static Ref<ZEBWeakValueObject> withValue(const Ref<NSObject>& value) {
    return makeRef<ZEBWeakValueObject>(value);
  }

  /// "ZEBWeakValueObject", with everything here by its selectors; initWithValue: is a class method
  /// there.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  /// Nil once the object is gone.
  Ref<NSObject> value() const noexcept { return value_.lock(); }
  void setValue(const Ref<NSObject>& value) { value_ = value; }

 private:
  WeakRef<NSObject> value_;
};

}  // namespace zeb
