#pragma once

#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Runtime/SEL.h>
#include <ZEBPlatform/Runtime/ValueConversion.h>

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <utility>

/// How typed code becomes the untyped code of a method. Behind `MethodBody`.
namespace zeb::detail {

/// A dynamic call, for the texts of its exceptions.
struct Call {
  const Value& self;
  SEL selector;
  std::span<const Value> arguments;
};

/// "-[Class selector]", or with a plus when the receiver is a class.
std::string methodName(const Value& receiver, SEL selector);

// These throw NSException (NSInvalidArgumentException).
[[noreturn]] void raiseArgumentCount(const Call& call, std::size_t wanted);
[[noreturn]] void raiseWrongReceiver(const Call& call, const std::type_info& wanted);
/// `index` counts from 0.
[[noreturn]] void raiseWrongArgument(const Call& call, std::size_t index,
                                     const std::type_info& wanted);
[[noreturn]] void raiseWrongResult(const Value& receiver, SEL selector, const Value& result,
                                   const std::type_info& wanted);

template <class... Types>
struct TypeList {};

/// Result, parameters, and for member functions the class, of what has one signature.
template <class Callable>
struct Signature {};

template <class Closure>
  requires requires { &Closure::operator(); }
struct Signature<Closure> : Signature<decltype(&Closure::operator())> {
  using Receiver = void;
};

template <class R, class... A>
struct Signature<R (*)(A...)> {
  using Receiver = void;
  using Result = R;
  using Parameters = TypeList<A...>;
};
template <class R, class... A>
struct Signature<R (*)(A...) noexcept> : Signature<R (*)(A...)> {};

template <class R, class C, class... A>
struct Signature<R (C::*)(A...)> : Signature<R (*)(A...)> {
  using Receiver = C;
};
template <class R, class C, class... A>
struct Signature<R (C::*)(A...) const> : Signature<R (C::*)(A...)> {};
template <class R, class C, class... A>
struct Signature<R (C::*)(A...) noexcept> : Signature<R (C::*)(A...)> {};
template <class R, class C, class... A>
struct Signature<R (C::*)(A...) const noexcept> : Signature<R (C::*)(A...)> {};

/// Code of the untyped form.
template <class Callable>
concept UntypedCallable =
    std::is_invocable_r_v<Value, Callable&, const Value&, SEL, std::span<const Value>>;

/// What has one signature and is not of the untyped form.
template <class Callable>
concept TypedCallable =
    !UntypedCallable<Callable> && requires { typename Signature<Callable>::Result; };

/// Parameters that name an object itself, which then can't be nil.
template <class Parameter>
concept ObjectReference = std::is_lvalue_reference_v<Parameter> &&
                          std::derived_from<std::remove_cvref_t<Parameter>, NSObject>;

template <class T>
constexpr char typeCode() noexcept {
  if constexpr (std::is_void_v<T>) {
    return 'v';
  } else if constexpr (ObjectReference<T>) {
    return '@';
  } else {
    constexpr bool isKnown = requires { ValueConversion<std::remove_cvref_t<T>>::typeCode; };
    static_assert(isKnown,
                  "A property, parameter or result has a type that dynamic calls can't convert: "
                  "use one of the types listed in ZEBPlatform/Runtime/ValueConversion.h, or "
                  "specialise zeb::ValueConversion for yours.");
    if constexpr (isKnown) return ValueConversion<std::remove_cvref_t<T>>::typeCode;
    return '@';
  }
}

/// The object as a `T`, or null. Mostly it is exactly one, which is quicker to find out than its
/// bases.
template <class T>
T* objectAs(const Value& value) noexcept {
  NSObject* object = value.objectPointer();
  if (!object) return nullptr;
  if constexpr (requires { static_cast<T*>(object); }) {
    if (typeid(*object) == typeid(T)) return static_cast<T*>(object);
  }
  return dynamic_cast<T*>(object);
}

/// What a parameter is given: an object itself, the value itself, or what the value converts to.
template <class Parameter>
struct Converted {
  static_assert(!std::is_lvalue_reference_v<Parameter> ||
                    std::is_const_v<std::remove_reference_t<Parameter>>,
                "a converted value can't be changed by the method");
  using Type = typename decltype(ValueConversion<std::remove_cvref_t<Parameter>>::fromValue(
      Value()))::value_type;
};
template <ObjectReference Parameter>
struct Converted<Parameter> {
  using Type = Parameter;
};
template <class Parameter>
  requires std::same_as<std::remove_cvref_t<Parameter>, Value>
struct Converted<Parameter> {
  using Type = const Value&;
};

/// Calls `mismatch`, which throws, when the value is of another kind.
template <class Parameter, class Mismatch>
typename Converted<Parameter>::Type convert(const Value& value, const Mismatch& mismatch) {
  using Type = std::remove_cvref_t<Parameter>;
  if constexpr (ObjectReference<Parameter>) {
    Type* object = objectAs<Type>(value);
    if (!object) mismatch(typeid(Type));
    return *object;
  } else if constexpr (std::same_as<Type, Value>) {
    return value;
  } else {
    auto converted = ValueConversion<Type>::fromValue(value);
    if (!converted) mismatch(typeid(Type));
    return *std::move(converted);
  }
}

template <class Parameter>
typename Converted<Parameter>::Type argument(const Call& call, std::size_t index) {
  return convert<Parameter>(call.arguments[index], [&](const std::type_info& wanted) {
    raiseWrongArgument(call, index, wanted);
  });
}

/// Calls with the call's arguments after those already `bound`.
template <class Callable, class... Parameters, class... Bound>
Value callConverted(Callable& callable, const Call& call, TypeList<Parameters...>,
                    Bound&&... bound) {
  if (call.arguments.size() != sizeof...(Parameters)) {
    raiseArgumentCount(call, sizeof...(Parameters));
  }
  return [&]<std::size_t... index>(std::index_sequence<index...>) -> Value {
    using Result = typename Signature<Callable>::Result;
    if constexpr (std::is_void_v<Result>) {
      std::invoke(callable, std::forward<Bound>(bound)..., argument<Parameters>(call, index)...);
      return {};
    } else {
      return ValueConversion<std::remove_cvref_t<Result>>::toValue(std::invoke(
          callable, std::forward<Bound>(bound)..., argument<Parameters>(call, index)...));
    }
  }(std::index_sequence_for<Parameters...>{});
}

template <class Result, class... Parameters>
std::string encodeTypes(TypeList<Parameters...>) {
  return {typeCode<Result>(), '@', ':', typeCode<Parameters>()...};
}

/// A class method's code: the receiver is not among its parameters.
template <class Callable>
struct TypedFunction {
  using Parameters = typename Signature<Callable>::Parameters;
  static constexpr std::size_t argumentCount = []<class... All>(TypeList<All...>) {
    return sizeof...(All);
  }(Parameters{});
  static std::string typeEncoding() {
    return encodeTypes<typename Signature<Callable>::Result>(Parameters{});
  }

  explicit TypedFunction(Callable code) : callable(std::move(code)) {}
  Value operator()(const Value& self, SEL selector, std::span<const Value> arguments) {
    return callConverted(callable, Call{self, selector, arguments}, Parameters{});
  }
  Callable callable;
};

/// Splits the receiver off: the class of a member function, else the first parameter.
template <class Receiver, class Parameters>
struct SplitReceiver {
  using Type = std::conditional_t<std::derived_from<Receiver, NSObject>, Receiver&, Receiver>;
  using Rest = Parameters;
};
template <class First, class... Others>
struct SplitReceiver<void, TypeList<First, Others...>> {
  using Type = First;
  using Rest = TypeList<Others...>;
};

/// An instance method's code.
template <class Callable>
struct TypedMethod {
  using Split = SplitReceiver<typename Signature<Callable>::Receiver,
                              typename Signature<Callable>::Parameters>;
  static constexpr std::size_t argumentCount = []<class... All>(TypeList<All...>) {
    return sizeof...(All);
  }(typename Split::Rest{});
  static std::string typeEncoding() {
    return encodeTypes<typename Signature<Callable>::Result>(typename Split::Rest{});
  }

  explicit TypedMethod(Callable code) : callable(std::move(code)) {}
  Value operator()(const Value& self, SEL selector, std::span<const Value> arguments) {
    const Call call{self, selector, arguments};
    return callConverted(callable, call, typename Split::Rest{},
                         convert<typename Split::Type>(self, [&](const std::type_info& wanted) {
                           raiseWrongReceiver(call, wanted);
                         }));
  }
  Callable callable;
};

}  // namespace zeb::detail
