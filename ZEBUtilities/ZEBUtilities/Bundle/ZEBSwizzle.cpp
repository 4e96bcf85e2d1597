#include <ZEBPlatform/Runtime/MethodBody.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBUtilities/Bundle/ZEBSwizzle.h>

namespace zeb {

namespace {

MethodBody bodyOf(Method method) {
  return MethodBody(method_getImplementation(method), method_getTypeEncoding(method));
}

}  // namespace

void ZEBSwizzle(Class* cls, SEL target, SEL replacement) {
  const Method targetMethod = class_getInstanceMethod(cls, target);
  const Method replacementMethod = class_getInstanceMethod(cls, replacement);
  if (!targetMethod || !replacementMethod) return;
  if (class_addMethod(cls, target, bodyOf(replacementMethod))) {
    class_replaceMethod(cls, replacement, bodyOf(targetMethod));
  } else {
    method_exchangeImplementations(targetMethod, replacementMethod);
  }
}

void ZEBClassSwizzle(Class* cls, SEL target, SEL replacement) {
  if (cls) ZEBSwizzle(cls->classObject(), target, replacement);
}

IMP ZEBAddMissingMethodImplementation(Class* cls, SEL newSelector, SEL existingSelector) {
  const Method existing = class_getInstanceMethod(cls, existingSelector);
  if (!existing) return nullptr;
  const MethodBody body = bodyOf(existing);
  class_addMethod(cls, newSelector, body);
  const auto report = [existingSelector](const Value& self, SEL, std::span<const Value>) -> Value {
    send(self, "doesNotRecognizeSelector:"_sel, existingSelector);
    doesNotRecognizeSelector(self, existingSelector);
  };
  class_replaceMethod(cls, existingSelector, MethodBody(report, body.types()));
  return body.implementation();
}

}  // namespace zeb
