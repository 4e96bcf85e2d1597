#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/NullableText.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Runtime/SEL.h>
#include <ZEBPlatform/Runtime/detail/GrowingIndex.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace zeb {

class MethodBody;

/// The untyped code of a method: what `send` ends up calling.
using IMP = Block<Value(const Value& self, SEL selector, std::span<const Value> arguments)>;

namespace detail {

/// Held while a class is made or changed.
inline constinit Lock classChanges;

/// A property as key-value coding and observing see it.
struct PropertyRecord {
  std::size_t hash;
  NSString name;
  SEL getter;
  SEL setter;  ///< nil: read-only
};

struct MethodRecord {
  std::size_t hash;
  SEL selector;
  std::string types;
  std::atomic<const IMP*> implementation;
  /// The property whose observers a call notifies, or null.
  std::atomic<const PropertyRecord*> setterOf;
};

/// Grows whenever a class gets a method that hides an inherited one: while it stays the same, a
/// method that was found is still the one that would be found.
inline std::atomic<std::uint64_t> methodsHiddenCount{0};
inline std::uint64_t methodsHidden() noexcept {
  return methodsHiddenCount.load(std::memory_order_acquire);
}

}  // namespace detail

/// A method of a class; nullable, valid for good. What it calls can be replaced and exchanged.
using Method = detail::MethodRecord*;

/// A class of the dynamic runtime: a name, a superclass, methods by selector, and properties. The
/// methods of the class itself ("class methods") are the instance methods of its metaclass, which
/// is the class that a class has as an object; so classes are sent to like all objects.
///
/// Made by `registerClass` (Runtime/Registration.h), lives until the process ends. Any thread may
/// look up and change methods at any time; no lookup takes a lock. Implementations that were
/// replaced are kept, because a thread may be about to call them.
class Class final : public NSObject {
 public:
  /// Metaclasses have the name of their class.
  const char* name() const noexcept { return name_.c_str(); }
  Class* superclass() const noexcept { return superclass_; }
  bool isMetaclass() const noexcept { return metaclass_ == nullptr; }
  /// Whether it is `other` or inherits from it. False for nil.
  bool isSubclassOfClass(const Class* other) const noexcept;

  /// The metaclass; a metaclass's own is nil.
  Class* classObject() const override { return metaclass_; }
  /// The class's name.
  std::string description() const override { return name_; }

  // What the runtime is made with. ----------------------------------------------------------------

  /// With a metaclass of its own; a root class without superclass.
  Class(std::string_view name, Class* superclass);

  /// Of this class or the nearest one above that has it, or null.
  Method findMethod(SEL selector) const noexcept;
  const detail::PropertyRecord* findProperty(const StringKey& key) const noexcept;

  Method findOwnMethod(SEL selector) const noexcept;
  const detail::PropertyRecord* findOwnProperty(const StringKey& key) const noexcept;
  Method addOwnMethod(SEL selector, const MethodBody& body) ZEB_REQUIRES(detail::classChanges);
  const detail::PropertyRecord& addOwnProperty(std::unique_ptr<detail::PropertyRecord> property)
      ZEB_REQUIRES(detail::classChanges);

 private:
  enum MetaclassOf { metaclassOf };
  Class(MetaclassOf, std::string_view name, Class* superclass);

  const std::string name_;
  Class* const superclass_;
  Class* const metaclass_;
  detail::GrowingIndex<detail::MethodRecord> methods_;
  detail::GrowingIndex<detail::PropertyRecord> properties_;
};

/// The class of this name, or nil. The first search for a name that is not there yet registers the
/// classes of the library on top, see Runtime/Registration.h.
Class* objc_lookUpClass(NullableText name);

/// The class of a value: of an object its own, of other values "NSString", "NSMutableArray",
/// "NSNumber" …; nil for nil.
Class* object_getClass(const Value& value) noexcept;

/// The method that instances of the class use for the selector, inherited ones included; or nil.
/// All of these functions answer nil or false when given nil.
Method class_getInstanceMethod(const Class* cls, SEL selector) noexcept;
/// The same for the class itself.
Method class_getClassMethod(const Class* cls, SEL selector) noexcept;

/// Gives the class a method of its own, which then hides an inherited one. False when it has its
/// own already. Throws NSException (NSInvalidArgumentException) when the body takes another number
/// of arguments than the selector has colons, or the selector is nil.
bool class_addMethod(Class* cls, SEL selector, const MethodBody& body);

/// The same, but replaces what the class's own method calls; answers the old implementation, nil
/// when the class had none of its own.
IMP class_replaceMethod(Class* cls, SEL selector, const MethodBody& body);

/// Makes each method call what the other one called.
void method_exchangeImplementations(Method first, Method second) noexcept;

SEL method_getName(Method method) noexcept;
IMP method_getImplementation(Method method) noexcept;
/// Type codes of result, receiver, selector and arguments: "v@:q". "" for nil.
const char* method_getTypeEncoding(Method method) noexcept;

}  // namespace zeb
