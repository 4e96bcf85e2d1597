#pragma once

#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBPlatform/Runtime/detail/TypedCall.h>

#include <concepts>
#include <functional>
#include <span>
#include <type_traits>
#include <utility>

/// How the array methods call C++ code in place of a selector. Behind `zeb_map` and `zeb_filter`.
namespace zeb::detail {

/// Code that takes the element as a `Value`.
template <class Callable, class... Objects>
concept TakesElement = std::is_invocable_v<Callable&, const Value&, const Objects&...>;

/// Code that takes the element as it is, or as the type of its first parameter or its class.
template <class Callable, class... Objects>
concept ElementCallable = !std::convertible_to<Callable, SEL> &&
                          (TakesElement<Callable, Objects...> || TypedCallable<Callable>);

/// A callable, and the objects that it gets after the element.
template <class Callable, class... Objects>
class ElementCall {
 public:
  explicit ElementCall(Callable callable, const Objects&... objects)
      : method_(std::move(callable)), objects_{asValue(objects)..., Value()} {}

  /// An element or object of another kind than a parameter takes throws NSException
  /// (NSInvalidArgumentException) that names the selector of the array method.
  Value operator()(const Value& element, SEL arrayMethod) {
    return method_(element, arrayMethod, std::span<const Value>(objects_, sizeof...(Objects)));
  }

 private:
  TypedMethod<Callable> method_;
  const Value objects_[sizeof...(Objects) + 1];
};

template <class Callable, class... Objects>
  requires TakesElement<Callable, Objects...>
class ElementCall<Callable, Objects...> {
 public:
  explicit ElementCall(Callable callable, const Objects&... objects)
      : callable_(std::move(callable)), objects_(objects...) {}

  Value operator()(const Value& element, SEL) {
    return std::apply(
        [&](const Objects&... objects) -> Value {
          return asValue(std::invoke(callable_, element, objects...));
        },
        objects_);
  }

 private:
  Callable callable_;
  std::tuple<const Objects&...> objects_;
};

}  // namespace zeb::detail
