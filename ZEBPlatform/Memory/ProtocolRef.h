#pragma once

#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/WeakRef.h>

#include <concepts>
#include <cstddef>
#include <utility>

namespace zeb {

/// Strong, nullable reference to an object by a protocol that its class implements.
///
/// A protocol is an abstract class that is not derived from `NSObject`, so that a class can
/// implement any number of them beside its one root class:
///
///     class Recorder : public NSObject, public SomeDelegate { … };
///
/// Converts from a `Ref` to such a class. As thread-safe as a `Ref`.
template <class Protocol>
class ProtocolRef {
 public:
  constexpr ProtocolRef() noexcept = default;
  constexpr ProtocolRef(std::nullptr_t) noexcept {}
  template <class T>
    requires std::convertible_to<T*, NSObject*> && std::convertible_to<T*, Protocol*>
  ProtocolRef(Ref<T> object) noexcept : protocol_(object.get()), object_(std::move(object)) {}

  /// The object by the protocol; nil when its class does not implement it.
  static ProtocolRef from(Ref<NSObject> object) noexcept {
    auto* protocol = dynamic_cast<Protocol*>(object.get());
    if (!protocol) return nullptr;
    return ProtocolRef(protocol, std::move(object));
  }

  Protocol* get() const noexcept { return protocol_; }
  Protocol* operator->() const noexcept { return protocol_; }
  Protocol& operator*() const noexcept { return *protocol_; }
  explicit operator bool() const noexcept { return protocol_ != nullptr; }

  /// The object itself.
  const Ref<NSObject>& object() const noexcept { return object_; }

  /// Identity, not equality.
  bool operator==(const ProtocolRef& other) const noexcept { return object_ == other.object_; }
  template <class T>
  bool operator==(const Ref<T>& other) const noexcept {
    return object_ == other;
  }
  bool operator==(std::nullptr_t) const noexcept { return !protocol_; }

 private:
  template <class>
  friend class WeakProtocolRef;
  ProtocolRef(Protocol* protocol, Ref<NSObject> object) noexcept
      : protocol_(protocol), object_(std::move(object)) {}

  Protocol* protocol_ = nullptr;
  Ref<NSObject> object_;
};

/// The same without keeping the object alive; see `WeakRef`.
template <class Protocol>
class WeakProtocolRef {
 public:
  WeakProtocolRef() noexcept = default;
  WeakProtocolRef(const ProtocolRef<Protocol>& object)
      : protocol_(object.get()), object_(object.object()) {}

  /// Nil once the object has begun to die.
  ProtocolRef<Protocol> lock() const noexcept {
    Ref<NSObject> alive = object_.lock();
    if (!alive) return nullptr;
    return ProtocolRef<Protocol>(protocol_, std::move(alive));
  }
  bool isAlive() const noexcept { return object_.isAlive(); }

 private:
  Protocol* protocol_ = nullptr;
  WeakRef<NSObject> object_;
};

}  // namespace zeb
