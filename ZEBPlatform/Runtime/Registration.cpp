#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Runtime/ClassRegistryPrivate.h>
#include <ZEBPlatform/Runtime/FoundationClassesPrivate.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBPlatform/Runtime/SetterNamePrivate.h>

#include <string>
#include <utility>

namespace zeb {

namespace {

SEL selectorOf(const ClassMember& member) {
  if (member.name.length() == 0) raiseInvalidArgument("a method or property needs a name");
  return sel_registerName(member.name.utf8());
}

void addProperty(Class& cls, const ClassMember& member) {
  const std::string name = member.name.utf8();
  if (cls.findOwnProperty(member.name)) {
    raiseInvalidArgument(std::string(cls.name()) + " has the property " + name + " already");
  }
  const SEL getter = selectorOf(member);
  const SEL setter = member.setter ? sel_registerName(detail::setterName(name)) : SEL();
  class_replaceMethod(&cls, getter, member.body);
  if (setter) class_replaceMethod(&cls, setter, *member.setter);

  const detail::LockGuard guard(detail::classChanges);
  const bool isAutomatic = member.notification == KeyValueNotification::automatic;
  const NSString kept = member.name.detachedCopy();
  const detail::PropertyRecord& property =
      cls.addOwnProperty(std::unique_ptr<detail::PropertyRecord>(
          new detail::PropertyRecord{StringKey(kept).hash(), kept, getter, setter}));
  if (setter) cls.findOwnMethod(setter)->setterOf = isAutomatic ? &property : nullptr;
}

}  // namespace

ClassMember method(const NSString& selector, MethodBody body) {
  return {ClassMember::Kind::method, selector, std::move(body), {}};
}

ClassMember classMethod(const NSString& selector, MethodBody body) {
  return {ClassMember::Kind::classMethod, selector, std::move(body), {}};
}

ClassMember property(const NSString& name, MethodBody getter) {
  return {ClassMember::Kind::property, name, std::move(getter), {}};
}

ClassMember property(const NSString& name, MethodBody getter, MethodBody setter,
                     KeyValueNotification notification) {
  return {ClassMember::Kind::property, name, std::move(getter), std::move(setter), notification};
}

Class* registerClass(std::string_view name, Class* superclass,
                     std::initializer_list<ClassMember> members) {
  Class* cls =
      detail::createClass(name, superclass ? superclass : detail::foundationClasses().root);
  extendClass(cls, members);
  return cls;
}

Class* registerClass(std::string_view name, std::initializer_list<ClassMember> members) {
  return registerClass(name, nullptr, members);
}

void extendClass(Class* cls, std::initializer_list<ClassMember> members) {
  if (!cls) return;
  for (const ClassMember& member : members) {
    switch (member.kind) {
      case ClassMember::Kind::method:
        class_replaceMethod(cls, selectorOf(member), member.body);
        break;
      case ClassMember::Kind::classMethod:
        class_replaceMethod(cls->classObject(), selectorOf(member), member.body);
        break;
      case ClassMember::Kind::property:
        addProperty(*cls, member);
        break;
    }
  }
}

}  // namespace zeb
