#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Runtime/HeldObjectPrivate.h>
#include <ZEBPlatform/Runtime/NSKeyValueCoding.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBPlatform/Runtime/SetterNamePrivate.h>

#include <utility>

namespace zeb {

const char* const NSUndefinedKeyException = "NSUnknownKeyException";

namespace {

[[noreturn]] void raiseUndefinedKey(const Value& receiver, const StringKey& key, const char* what) {
  throw NSException(
      NSUndefinedKeyException,
      NSString::stringWithFormat("%@ has no %s \"%@\"", receiver, what, key.string()));
}

/// The selector if it exists: keys may come from outside, and selectors are never freed.
SEL selectorInUse(std::string_view name, const Value& receiver) {
  const SEL selector = detail::findSelector(name);
  return selector && respondsToSelector(receiver, selector) ? selector : SEL();
}

SEL getterOf(const Value& receiver, const StringKey& key) {
  if (const auto* property = object_getClass(receiver)->findProperty(key)) return property->getter;
  const SEL method = selectorInUse(key.string().utf8(), receiver);
  return method.argumentCount() == 0 ? method : SEL();
}

SEL setterOf(const Value& receiver, const Class* cls, const StringKey& key) {
  if (const auto* property = cls->findProperty(key)) return property->setter;
  const SEL method = selectorInUse(detail::setterName(key.string().utf8()), receiver);
  return method.argumentCount() == 1 ? method : SEL();
}

}  // namespace

Value valueForKey(const Value& receiver, const StringKey& key) {
  if (receiver.isNil()) return {};
  if (receiver.isDictionary()) return NSDictionary(receiver)[key];
  const SEL getter = getterOf(receiver, key);
  if (!getter) raiseUndefinedKey(receiver, key, "value for the key");
  return detail::sendMessage(receiver, getter, {});
}

void setValueForKey(const Value& receiver, const Value& value, const StringKey& key) {
  if (receiver.isNil()) return;
  if (NSMutableDictionary dictionary = NSMutableDictionary::from(receiver)) {
    if (value) {
      dictionary.setObject(value, key.string());
    } else {
      dictionary.removeObjectForKey(key.string());
    }
    return;
  }
  const Class* cls = object_getClass(receiver);
  const SEL setter = setterOf(receiver, cls, key);
  if (!setter) raiseUndefinedKey(receiver, key, "setter for the key");
  detail::sendMessage(receiver, cls, setter, std::span(&value, 1));
}

[[gnu::noinline]] void detail::setValueForKeyOfObject(Ref<NSObject> receiver, const Value& value,
                                                      const StringKey& key) {
  const HeldObject held(std::move(receiver));
  setValueForKey(held.object(), value, key);
}

Value valueForKeyPath(const Value& receiver, const NSString& keyPath) {
  Value value = receiver;
  for (const Value& key : keyPath.componentsSeparatedByString(".")) {
    value = valueForKey(value, NSString(key));
  }
  return value;
}

void setValueForKeyPath(const Value& receiver, const Value& value, const NSString& keyPath) {
  Value owner = receiver;
  const NSArray keys = keyPath.componentsSeparatedByString(".");
  for (const Value& key : keys) {
    if (&key + 1 == keys.end()) return setValueForKey(owner, value, NSString(key));
    owner = valueForKey(owner, NSString(key));
  }
}

}  // namespace zeb
