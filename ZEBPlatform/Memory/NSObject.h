#pragma once

#include <ZEBPlatform/Memory/Ref.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string>

namespace zeb {

class Class;

namespace detail {
class ObjectExtras;
}

/// Root of all classes whose objects are shared by reference.
///
/// Objects are made with `makeRef<T>()`, start with one reference and are deleted by the release of
/// the last one, on whichever thread that happens. The count is atomic; everything else about an
/// object is as thread-safe as its class says.
class NSObject {
 public:
  /// A destructor may pass its object to code that takes a reference for a while; a reference that
  /// is kept longer dangles.
  NSObject(const NSObject&) = delete;
  NSObject& operator=(const NSObject&) = delete;

  /// Objects of up to 120 bytes get memory that threads keep for reuse: at most 64 free blocks of
  /// each size per thread, and 16 MiB for all threads together.
  static void* operator new(std::size_t size);
  static void operator delete(void* memory, std::size_t size) noexcept;
  static void* operator new(std::size_t size, std::align_val_t alignment) {
    return ::operator new(size, alignment);
  }
  static void operator delete(void* memory, std::align_val_t alignment) noexcept {
    ::operator delete(memory, alignment);
  }
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void*, void*) noexcept {}

  void retain() const noexcept {
    // Reads first, because changing the count of an object with extras would have no effect.
    if (isInExtras(strongCount_.load(std::memory_order_relaxed)) ||
        isInExtras(strongCount_.fetch_add(1, std::memory_order_relaxed))) [[unlikely]] {
      retainInExtras();
    }
  }
  void release() const noexcept;

  /// Whether the caller's reference is the only one, so that no other owner can see a change.
  bool isUniquelyReferenced() const noexcept {
    return strongCount_.load(std::memory_order_acquire) == 1 &&
           !extras_.load(std::memory_order_acquire);
  }

  /// Equality of content; identity unless a class says otherwise. Equal objects have equal hashes.
  virtual bool isEqual(const NSObject& other) const { return this == &other; }
  virtual std::size_t hash() const noexcept;

  /// The object's class in the dynamic runtime. Nil for a C++ class that takes no part in it: its
  /// objects count as plain `NSObject`s there.
  virtual Class* classObject() const { return nullptr; }

  /// The name of the object's class, without namespace.
  virtual std::string className() const;

  /// For people reading logs: "<ClassName: 0x…>" unless a class has something better to say. UTF-8.
  virtual std::string description() const;

 protected:
  NSObject() noexcept = default;
  virtual ~NSObject();

  /// Retains unless destruction has begun. For holders of a raw pointer whose lock the destructor
  /// also takes.
  bool retainUnlessDying() const noexcept;

  /// Releases unless the reference is the last one. For callers that must not destroy the object
  /// where they are, for example with a lock held.
  bool releaseUnlessLast() const noexcept;

  /// Deletes the object, without the atomic operation of `release`. The caller's reference must be
  /// the only one, as `isUniquelyReferenced` answers, and the only way to get another one.
  void releaseOnlyReference() const noexcept;

 private:
  friend class detail::ObjectExtras;

  /// Whether a value of the count says that the count is in the extras now.
  static constexpr bool isInExtras(std::uint32_t count) noexcept { return count >> 31 != 0; }
  void retainInExtras() const noexcept;
  void releaseInExtras() const noexcept;
  detail::ObjectExtras& extrasWithCount() const noexcept;

  /// Of strong references, until the object gets extras: these then have the count, because weak
  /// references must be able to read it when the object is gone.
  mutable std::atomic<std::uint32_t> strongCount_{1};
  /// Weak references and associated objects: most objects never have any.
  mutable std::atomic<detail::ObjectExtras*> extras_{nullptr};
};

/// Keeps `associated` alive as long as `owner`, under `key` (an address that the caller chooses and
/// owns; it is never dereferenced). A nil `associated` removes the association. The old one is
/// released. Associated objects are released while the owner is being destroyed, after the
/// destructors of its own class. Any thread.
void setAssociatedObject(const NSObject& owner, const void* key, Ref<NSObject> associated);

/// The object kept under `key`, or nil. Any thread.
Ref<NSObject> associatedObject(const NSObject& owner, const void* key);

/// Removes the association under `key` and answers its object if `isWanted` is true for that
/// object; else changes nothing and answers nil. If several threads take it at the same time, one
/// of them gets the object. A lock is held while `isWanted` looks at the object, so it must do
/// nothing else. Any thread.
[[nodiscard]] Ref<NSObject> takeAssociatedObject(const NSObject& owner, const void* key,
                                                 bool (*isWanted)(const NSObject& associated));

}  // namespace zeb
