#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Runtime/ClassRegistryPrivate.h>
#include <ZEBPlatform/Runtime/FoundationClassesPrivate.h>
#include <ZEBPlatform/Runtime/MethodBody.h>

#include <deque>

/// Null where nothing on top of this library has classes; see Runtime/Registration.h.
extern "C" [[gnu::weak]] void zebRegisterClassesByName();

namespace zeb {

namespace {

/// Keeps the implementation for good.
const IMP* kept(const IMP& implementation) ZEB_REQUIRES(detail::classChanges) {
  static detail::NeverDestroyed<std::deque<IMP>> all;
  return &all->emplace_back(implementation);
}

std::size_t hashOfName(std::string_view name) {
  return detail::hashOfUTF8(name.data(), name.size());
}

struct RegisteredClass {
  std::size_t hash;
  Ref<Class> cls;
};

struct Registry {
  detail::GrowingIndex<RegisteredClass> classes;
  Class* find(std::string_view name) const {
    const RegisteredClass* found =
        classes.find(hashOfName(name), [&](const auto& one) { return one.cls->name() == name; });
    return found ? found->cls.get() : nullptr;
  }
};

Registry& registry() {
  static detail::NeverDestroyed<Registry> all;  // objects need their classes until the end
  return *all;
}

void registerClassesOnTop() {
  static const bool isDone = [] {
    if (zebRegisterClassesByName) zebRegisterClassesByName();
    return true;
  }();
  (void)isDone;
}

void requireFitting(SEL selector, const MethodBody& body) {
  if (!selector) raiseInvalidArgument("a method needs a selector");
  if (!body.implementation()) {
    raiseInvalidArgument(NSString::stringWithFormat("no implementation for %s", selector.name()));
  }
  if (!body.fits(selector)) {
    raiseInvalidArgument(NSString::stringWithFormat(
        "the implementation for %s takes another number of arguments", selector.name()));
  }
}

}  // namespace

namespace detail {

Class* createClass(std::string_view name, Class* superclass) {
  const LockGuard guard(classChanges);
  if (registry().find(name)) {
    raiseInvalidArgument(
        NSString::stringWithFormat("there is a class %s already", std::string(name)));
  }
  auto entry = std::make_unique<RegisteredClass>(
      RegisteredClass{hashOfName(name), makeRef<Class>(name, superclass)});
  return registry().classes.add(std::move(entry)).cls.get();
}

}  // namespace detail

Class::Class(std::string_view name, Class* superclass)
    : name_(name),
      superclass_(superclass),
      metaclass_(new Class(metaclassOf, name, superclass ? superclass->metaclass_ : this)) {}

Class::Class(MetaclassOf, std::string_view name, Class* superclass)
    : name_(name), superclass_(superclass), metaclass_(nullptr) {}

bool Class::isSubclassOfClass(const Class* other) const noexcept {
  for (const Class* cls = this; cls; cls = cls->superclass_) {
    if (cls == other) return true;
  }
  return false;
}

Method Class::findOwnMethod(SEL selector) const noexcept {
  return methods_.find(selector.hash(),
                       [&](const detail::MethodRecord& one) { return one.selector == selector; });
}

Method Class::findMethod(SEL selector) const noexcept {
  for (const Class* cls = this; cls; cls = cls->superclass_) {
    if (Method method = cls->findOwnMethod(selector)) return method;
  }
  return nullptr;
}

const detail::PropertyRecord* Class::findOwnProperty(const StringKey& key) const noexcept {
  return properties_.find(
      key.hash(), [&](const detail::PropertyRecord& one) { return key.matches(one.name.text()); });
}

const detail::PropertyRecord* Class::findProperty(const StringKey& key) const noexcept {
  for (const Class* cls = this; cls; cls = cls->superclass_) {
    if (const auto* property = cls->findOwnProperty(key)) return property;
  }
  return nullptr;
}

Method Class::addOwnMethod(SEL selector, const MethodBody& body) {
  // An overridden setter is still the property's setter.
  const Method inherited = superclass_ ? superclass_->findMethod(selector) : nullptr;
  std::string types = body.types();
  if (types.empty()) types = "@@:" + std::string(selector.argumentCount(), '@');
  Method added = &methods_.add(std::unique_ptr<detail::MethodRecord>(
      new detail::MethodRecord{selector.hash(),
                               selector,
                               std::move(types),
                               {kept(body.implementation())},
                               {inherited ? inherited->setterOf.load() : nullptr}}));
  if (inherited) ++detail::methodsHiddenCount;
  return added;
}

const detail::PropertyRecord& Class::addOwnProperty(
    std::unique_ptr<detail::PropertyRecord> property) {
  return properties_.add(std::move(property));
}

Class* objc_lookUpClass(NullableText name) {
  (void)detail::foundationClasses();
  if (Class* cls = registry().find(name)) return cls;
  registerClassesOnTop();
  return registry().find(name);
}

Class* object_getClass(const Value& value) noexcept {
  if (value.isObject()) {
    if (Class* cls = value.objectPointer()->classObject()) return cls;
    return detail::foundationClasses().root;
  }
  const detail::FoundationClasses& classes = detail::foundationClasses();
  const auto kind = static_cast<std::size_t>(value.kind());
  return value.isMutable() ? classes.mutableKinds[kind] : classes.immutableKinds[kind];
}

Method class_getInstanceMethod(const Class* cls, SEL selector) noexcept {
  return cls && selector ? cls->findMethod(selector) : nullptr;
}

Method class_getClassMethod(const Class* cls, SEL selector) noexcept {
  return cls ? class_getInstanceMethod(cls->classObject(), selector) : nullptr;
}

bool class_addMethod(Class* cls, SEL selector, const MethodBody& body) {
  requireFitting(selector, body);
  if (!cls) return false;
  const detail::LockGuard guard(detail::classChanges);
  if (cls->findOwnMethod(selector)) return false;
  cls->addOwnMethod(selector, body);
  return true;
}

IMP class_replaceMethod(Class* cls, SEL selector, const MethodBody& body) {
  requireFitting(selector, body);
  if (!cls) return nullptr;
  const detail::LockGuard guard(detail::classChanges);
  if (Method own = cls->findOwnMethod(selector)) {
    return *own->implementation.exchange(kept(body.implementation()));
  }
  cls->addOwnMethod(selector, body);
  return nullptr;
}

void method_exchangeImplementations(Method first, Method second) noexcept {
  if (!first || !second) return;
  const detail::LockGuard guard(detail::classChanges);
  first->implementation = second->implementation.exchange(first->implementation);
}

SEL method_getName(Method method) noexcept { return method ? method->selector : SEL(); }

IMP method_getImplementation(Method method) noexcept {
  return method ? *method->implementation.load() : IMP();
}

const char* method_getTypeEncoding(Method method) noexcept {
  return method ? method->types.c_str() : "";
}

}  // namespace zeb
