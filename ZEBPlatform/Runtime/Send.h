#pragma once

#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/Ref.h>
#include <ZEBPlatform/Runtime/Class.h>
#include <ZEBPlatform/Runtime/SEL.h>
#include <ZEBPlatform/Runtime/ValueConversion.h>
#include <ZEBPlatform/Runtime/detail/TypedCall.h>

#include <concepts>
#include <span>
#include <type_traits>
#include <typeinfo>

namespace zeb {

namespace detail {

Value sendMessage(const Value& receiver, SEL selector, std::span<const Value> arguments);
/// The same for a caller that knows the receiver's class.
Value sendMessage(const Value& receiver, const Class* cls, SEL selector,
                  std::span<const Value> arguments);
Value performMessage(const Value& receiver, SEL selector, std::span<const Value> arguments);

/// Anything that can travel: texts in quotes, handles, numbers, objects by reference or pointer.
template <class T>
Value asValue(const T& thing) {
  if constexpr (std::derived_from<T, NSObject>) {
    return Ref<NSObject>(const_cast<T*>(&thing));
  } else if constexpr (std::convertible_to<const T&, Value>) {
    return thing;
  } else {
    return ValueConversion<std::decay_t<const T&>>::toValue(thing);
  }
}
inline const Value& asValue(const Value& value) { return value; }

template <class Result>
Result asResult(const Value& receiver, SEL selector, const Value& result) {
  static_assert(
      !std::is_reference_v<Result> && (!std::is_pointer_v<Result> || std::same_as<Result, Class*>),
      "nobody else may own the result: ask for a Ref");
  if constexpr (!std::is_void_v<Result>) {
    return convert<Result>(result, [&](const std::type_info& wanted) {
      raiseWrongResult(receiver, selector, result, wanted);
    });
  }
}

/// Throws NSException (NSInvalidArgumentException, "-[Class selector]: unrecognized selector sent
/// to instance 0x…") if the receiver's class has no method for the selector. For callers that must
/// not stop the process as `send` does.
void requireMethod(const Value& receiver, SEL selector);

}  // namespace detail

/// Calls the method that the receiver's class has for the selector, found at the time of the call;
/// sent to nil it answers nil. `send<NSString>(…)` converts the result (zero, false or nil from
/// nil).
///
/// A receiver without such a method stops the process, see `doesNotRecognizeSelector`. A wrong
/// number or kind of arguments, or a result of another kind than asked for, throws NSException
/// (NSInvalidArgumentException). Any thread, as far as the method itself allows.
template <class Result = Value, class Receiver, class... Arguments>
Result send(const Receiver& receiver, SEL selector, const Arguments&... arguments) {
  const Value& self = detail::asValue(receiver);
  if constexpr (sizeof...(Arguments) == 0) {
    return detail::asResult<Result>(self, selector, detail::sendMessage(self, selector, {}));
  } else {
    const Value list[] = {detail::asValue(arguments)...};
    return detail::asResult<Result>(self, selector, detail::sendMessage(self, selector, list));
  }
}

/// As `send`, but gives the method only as many of the arguments as its selector takes, and nil for
/// those that are missing: how callbacks given as a selector are called.
template <class Receiver, class... Arguments>
Value performSelector(const Receiver& receiver, SEL selector, const Arguments&... arguments) {
  const Value list[] = {detail::asValue(arguments)..., Value()};
  return detail::performMessage(detail::asValue(receiver), selector,
                                std::span(list).first(sizeof...(Arguments)));
}

/// Whether the receiver's class has a method for the selector; false for nil.
template <class Receiver>
bool respondsToSelector(const Receiver& receiver, SEL selector) {
  return class_getInstanceMethod(object_getClass(detail::asValue(receiver)), selector) != nullptr;
}

/// Stops the process with "-[Class selector]: unrecognized selector sent to instance 0x…", or
/// "+[Class selector]: unrecognized selector sent to class 0x…". A failing `send` sends the message
/// "doesNotRecognizeSelector:", so that a class can say more; it can't go on.
[[noreturn]] void doesNotRecognizeSelector(const Value& receiver, SEL selector) noexcept;

}  // namespace zeb
