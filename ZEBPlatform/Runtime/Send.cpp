#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBPlatform/Memory/TypeName.h>
#include <ZEBPlatform/Runtime/ObservedChange.h>
#include <ZEBPlatform/Runtime/Send.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

namespace zeb {

namespace detail {

namespace {

/// The name of the receiver's class; of a C++ class that is not registered its own, which says
/// more.
std::string nameOfClass(const Value& receiver) {
  if (receiver.isNil()) return "nil";
  if (NSObject* object = receiver.objectPointer(); object && !object->classObject()) {
    return object->className();
  }
  return object_getClass(receiver)->name();
}

[[noreturn]] void raiseMismatch(const Value& receiver, SEL selector, const std::string& what,
                                const Value& given, const std::type_info& wanted) {
  raiseInvalidArgument(methodName(receiver, selector) + ": " + what + " is " + nameOfClass(given) +
                       ", wanted is " + typeName(wanted));
}

std::string unrecognizedText(const Value& receiver, SEL selector) {
  if (receiver.isNil())
    return std::string("unrecognized selector ") + selector.name() + " sent to nil";
  char address[2 + 2 * sizeof(void*) + 1];
  std::snprintf(address, sizeof address, "%#llx",
                static_cast<unsigned long long>(receiver.payload()));
  const bool isClass = receiver.object<Class>() != nullptr;
  return methodName(receiver, selector) + ": unrecognized selector sent to " +
         (isClass ? "class " : "instance ") + address;
}

[[noreturn]] void reportUnrecognized(const Value& receiver, SEL selector) {
  const SEL report = "doesNotRecognizeSelector:"_sel;
  if (selector != report && respondsToSelector(receiver, report)) send(receiver, report, selector);
  doesNotRecognizeSelector(receiver, selector);
}

}  // namespace

std::string methodName(const Value& receiver, SEL selector) {
  const bool isClass = receiver.object<Class>() != nullptr;
  return (isClass ? "+[" : "-[") + nameOfClass(receiver) + " " + selector.name() + "]";
}

void raiseArgumentCount(const Call& call, std::size_t wanted) {
  raiseInvalidArgument(methodName(call.self, call.selector) + ": given are " +
                       std::to_string(call.arguments.size()) + " arguments, wanted are " +
                       std::to_string(wanted));
}

void raiseWrongReceiver(const Call& call, const std::type_info& wanted) {
  raiseMismatch(call.self, call.selector, "the receiver", call.self, wanted);
}

void raiseWrongArgument(const Call& call, std::size_t index, const std::type_info& wanted) {
  raiseMismatch(call.self, call.selector, "argument " + std::to_string(index + 1),
                call.arguments[index], wanted);
}

void raiseWrongResult(const Value& receiver, SEL selector, const Value& result,
                      const std::type_info& wanted) {
  raiseMismatch(receiver, selector, "the result", result, wanted);
}

void requireMethod(const Value& receiver, SEL selector) {
  if (respondsToSelector(receiver, selector)) return;
  raiseInvalidArgument(unrecognizedText(receiver, selector));
}

Value sendMessage(const Value& receiver, SEL selector, std::span<const Value> arguments) {
  if (receiver.isNil()) return {};
  return sendMessage(receiver, object_getClass(receiver), selector, arguments);
}

Value sendMessage(const Value& receiver, const Class* cls, SEL selector,
                  std::span<const Value> arguments) {
  const Method method = cls->findMethod(selector);
  if (!method) reportUnrecognized(receiver, selector);
  if (const PropertyRecord* property = method->setterOf.load(std::memory_order_acquire)) {
    if (receiver.isObject() && isObserved(*receiver.objectPointer())) {
      ObservedChange change(*receiver.objectPointer(), property->name);
      (*method->implementation.load(std::memory_order_acquire))(receiver, selector, arguments);
      if (change.concernsAnybody()) change.tell();
      return {};
    }
  }
  return (*method->implementation.load(std::memory_order_acquire))(receiver, selector, arguments);
}

Value performMessage(const Value& receiver, SEL selector, std::span<const Value> arguments) {
  const std::size_t wanted = selector.argumentCount();
  if (wanted <= arguments.size()) return sendMessage(receiver, selector, arguments.first(wanted));
  std::vector<Value> filled(arguments.begin(), arguments.end());
  filled.resize(wanted);
  return sendMessage(receiver, selector, filled);
}

}  // namespace detail

void doesNotRecognizeSelector(const Value& receiver, SEL selector) noexcept {
  fatal(detail::unrecognizedText(receiver, selector));
}

}  // namespace zeb
