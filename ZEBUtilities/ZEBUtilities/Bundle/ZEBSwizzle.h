#pragma once

#include <ZEBPlatform/Runtime/Class.h>
#include <ZEBPlatform/Runtime/SEL.h>

/// Exchange the implementations of methods in the dynamic runtime. Not synchronised: call these at
/// start-up, before other threads use the class. They do nothing for a nil class and for a class
/// without the methods.
namespace zeb {

/// Exchanges the implementations of `target` and `replacement` for instances of the class. An
/// inherited method does not change in the superclass that defines it.
void ZEBSwizzle(Class* cls, SEL target, SEL replacement);

/// The same for methods of the class itself.
void ZEBClassSwizzle(Class* cls, SEL target, SEL replacement);

/// Moves a method to another name: `newSelector` gets the implementation of `existingSelector`,
/// unless the class has its own method of that name. From then on, sending `existingSelector` is
/// reported as unrecognised and stops the process. Returns the moved implementation; nil when the
/// class has no such method.
IMP ZEBAddMissingMethodImplementation(Class* cls, SEL newSelector, SEL existingSelector);

}  // namespace zeb
