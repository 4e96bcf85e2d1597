#pragma once

#include <ZEBPlatform/Runtime/Class.h>
#include <ZEBPlatform/Runtime/SEL.h>

/// Exchanging what methods of the dynamic runtime do. Not synchronised: do it at start-up, before other
/// threads use the class. Nothing for a nil class, or one without the methods.
namespace zeb {

/// From now on `target` does what `replacement` did, and `replacement` what `target` did, for instances of
/// the class. A method that is only inherited stays as it is in the class that it comes from.
void ZEBSwizzle(Class* cls, SEL target, SEL replacement);

/// The same for methods of the class itself.
void ZEBClassSwizzle(Class* cls, SEL target, SEL replacement);

/// Moves a method to another name: `newSelector` gets what `existingSelector` does, unless the class has its
/// own method of that name, and sending `existingSelector` is from then on reported as unrecognised and
/// stops the process. Answers what was moved; nil when the class has no such method.
IMP ZEBAddMissingMethodImplementation(Class* cls, SEL newSelector, SEL existingSelector);

}  // namespace zeb
