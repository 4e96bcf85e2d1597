#pragma once

#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Runtime/Class.h>
#include <ZEBPlatform/Runtime/detail/TypedCall.h>

#include <string>
#include <utility>

namespace zeb {

/// The code of a method on its way into a class: untyped code, with type codes where they are
/// known, or anything typed that can be called: a member function, or a function or closure whose
/// first parameter is the receiver. Values are converted to and from the types of parameters and
/// result (see Runtime/ValueConversion.h); a call with a wrong number or kind of arguments throws
/// NSException (NSInvalidArgumentException) that says so. A null function pointer or an empty
/// wrapper is refused where the body is registered.
class MethodBody {
 public:
  MethodBody(IMP implementation, std::string types = {})
      : implementation_(std::move(implementation)), types_(std::move(types)) {}

  template <detail::UntypedCallable Callable>
  MethodBody(Callable callable) : implementation_(std::move(callable)) {}

  template <detail::TypedCallable Callable>
  MethodBody(Callable callable)
      : implementation_(orNil<detail::TypedMethod<Callable>>(std::move(callable))),
        types_(detail::TypedMethod<Callable>::typeEncoding()),
        argumentCount_(detail::TypedMethod<Callable>::argumentCount) {}

  /// The body of a class method, whose code takes the arguments only.
  template <detail::TypedCallable Callable>
  static MethodBody withoutReceiver(Callable callable) {
    using Function = detail::TypedFunction<Callable>;
    MethodBody body(orNil<Function>(std::move(callable)), Function::typeEncoding());
    body.argumentCount_ = Function::argumentCount;
    return body;
  }

  const IMP& implementation() const noexcept { return implementation_; }
  /// Empty if the types are unknown.
  const std::string& types() const noexcept { return types_; }
  bool fits(SEL selector) const noexcept {
    return argumentCount_ == anyCount || argumentCount_ == selector.argumentCount();
  }

 private:
  template <class Converted, class Callable>
  static IMP orNil(Callable callable) {
    return detail::isNilCallable(callable) ? IMP() : IMP(Converted(std::move(callable)));
  }

  static constexpr std::size_t anyCount = ~std::size_t{0};

  IMP implementation_;
  std::string types_;
  std::size_t argumentCount_ = anyCount;
};

}  // namespace zeb
