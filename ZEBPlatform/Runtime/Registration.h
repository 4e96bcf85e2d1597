#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Runtime/Class.h>
#include <ZEBPlatform/Runtime/MethodBody.h>
#include <ZEBPlatform/Runtime/SEL.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>

/// How a C++ class takes part in the dynamic runtime: it registers once, from a function-local
/// static, and says which class its objects have.
///
///     class Track : public NSObject {
///      public:
///       static Class* runtimeClass() {
///         static Class* const cls = registerClass("Track", {
///             property("title", &Track::title, &Track::setTitle),
///             method("seekTo:rate:", &Track::seek),
///             classMethod("trackWithTitle:", &Track::trackWithTitle),
///         });
///         return cls;
///       }
///       Class* classObject() const override { return runtimeClass(); }
///
/// A class is not registered before `runtimeClass()` is called: until then its name finds no class.
/// A library whose classes must be found by name before that defines the function
///
///     extern "C" void zebRegisterClassesByName();
///
/// which the runtime calls once, when an unknown name is looked up. It calls the `runtimeClass()`
/// of each class, must not look up names itself, and is linked into programs that hold the library
/// statically with `--undefined=zebRegisterClassesByName`. There is one such function per process:
/// ours has the product's classes; a program registers its own classes itself.
namespace zeb {

/// Which code notifies a property's observers of changes.
enum class KeyValueNotification : std::uint8_t {
  automatic,  ///< the runtime, whenever the setter is called dynamically
  manual,     ///< the class, around each change (`KeyValueChangeScope`)
};

/// One line of a class's table; made by the functions below. Registering one without a name or
/// without code throws NSException (NSInvalidArgumentException).
struct ClassMember {
  enum class Kind : std::uint8_t { method, classMethod, property };

  Kind kind;
  NSString name;
  MethodBody body;  ///< of a property its getter
  std::optional<MethodBody> setter;
  KeyValueNotification notification = KeyValueNotification::automatic;
};

/// An instance method. The body is a member function, or a function or closure that takes the
/// receiver (as `Track&`, `NSString`, `Value` …) and the arguments.
ClassMember method(const NSString& selector, MethodBody body);

/// A method of the class itself. The body takes the arguments only; untyped code gets the class as
/// `self`.
template <detail::TypedCallable Callable>
ClassMember classMethod(const NSString& selector, Callable callable) {
  return {ClassMember::Kind::classMethod,
          selector,
          MethodBody::withoutReceiver(std::move(callable)),
          {}};
}
ClassMember classMethod(const NSString& selector, MethodBody body);

/// A property: the method `name` and, when it can be written, the method `setName:`. Key-value
/// coding goes through these two.
ClassMember property(const NSString& name, MethodBody getter);
ClassMember property(const NSString& name, MethodBody getter, MethodBody setter,
                     KeyValueNotification notification = KeyValueNotification::automatic);

/// Makes a class; without a superclass it derives from "NSObject". Throws NSException
/// (NSInvalidArgumentException) when there is one of that name.
Class* registerClass(std::string_view name, Class* superclass,
                     std::initializer_list<ClassMember> members = {});
Class* registerClass(std::string_view name, std::initializer_list<ClassMember> members = {});

/// Adds methods and properties to a class that is there, and replaces methods of the same name: a
/// category. Throws NSException (NSInvalidArgumentException) for a property that the class itself
/// has already. Nil: nothing.
void extendClass(Class* cls, std::initializer_list<ClassMember> members);

}  // namespace zeb
