#pragma once

#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Operations/NSOperation.h>

#include <optional>
#include <type_traits>
#include <utility>

namespace zeb {

class SEL;  // in Runtime/SEL.h

/// Raised when the result of a cancelled invocation is requested.
extern const char* const NSInvocationOperationCancelledException;

/// An operation that calls a function and keeps its result. The function is released when the
/// operation has run.
class NSInvocationOperation : public NSOperation {
 public:
  /// Takes anything that can be called without arguments. If it returns nothing, or is nil and not
  /// called, the result is nil.
  template <class Callable>
    requires std::is_invocable_v<std::decay_t<Callable>&>
  explicit NSInvocationOperation(Callable&& callable)
      : invocation_(invocation(std::forward<Callable>(callable))) {}

  /// Calls a method of the object, which is kept alive until then. With a nil target or method
  /// nothing is called, and the result is nil.
  template <class Target, class Class, class Result>
  NSInvocationOperation(Ref<Target> target, Result (Class::*method)()) {
    if (!target || !method) return;
    invocation_ =
        invocation([target = std::move(target), method] { return (target.get()->*method)(); });
  }

  /// Sends the target a message, as `performSelector` does: with the object if the selector takes
  /// an argument. Both are kept alive until then. A nil target returns nil; a target that does not
  /// implement the selector stops the process when the operation runs. A nil selector throws
  /// NSException (NSInvalidArgumentException).
  ///
  /// Defined by the module of the dynamic runtime, which sends the message and depends on this
  /// module.
  NSInvocationOperation(Value target, SEL selector, Value object = nullptr);

  /// The result of the call; nil before the operation has finished. Throws the NSException that the
  /// call threw, and NSException (NSInvocationOperationCancelledException) if the operation was
  /// cancelled before the call.
  Value result() const;

  void main() override;

 private:
  template <class Callable>
  static Block<Value()> invocation(Callable&& callable) {
    if (detail::isNilCallable(callable)) return nullptr;
    if constexpr (std::is_void_v<std::invoke_result_t<std::decay_t<Callable>&>>) {
      return [callable = std::forward<Callable>(callable)]() mutable {
        callable();
        return Value();
      };
    } else {
      return std::forward<Callable>(callable);
    }
  }

  Block<Value()> invocation_;
  Value result_;
  std::optional<NSException> exception_;
  bool hasRun_ = false;
};

}  // namespace zeb
