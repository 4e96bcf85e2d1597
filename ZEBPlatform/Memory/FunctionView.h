#pragma once

#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

namespace zeb {

namespace detail {

/// Callables that may hold nothing to call: function pointers, and wrappers that say so.
template <class Callable>
concept NullableCallable = std::is_pointer_v<Callable> || std::is_member_pointer_v<Callable> ||
                           requires { &Callable::operator bool; };

/// Whether the callable holds nothing to call.
template <class Callable>
constexpr bool isNilCallable(const Callable& callable) noexcept {
  if constexpr (NullableCallable<Callable>) return !callable;
  return false;
}

template <class Member, class Object, class... Arguments>
decltype(auto) callMember(Member member, Object&& object, Arguments&&... arguments) {
  return (std::forward<Object>(object).*member)(std::forward<Arguments>(arguments)...);
}

/// Stops the process: "A nil block was called."
[[noreturn]] void stopForNilCall() noexcept;

}  // namespace detail

template <class Signature>
class FunctionView;

/// Nullable view of a callable that is called only while the call it was passed to lasts; nil also
/// when made of a null function pointer or of an empty wrapper. Owns nothing and allocates nothing,
/// so that iterating with a closure costs what a loop costs. For a closure that is kept, see
/// `Block`. A member function is called on the first argument. Calling a nil view stops the process
/// with a message.
template <class Result, class... Arguments>
class FunctionView<Result(Arguments...)> {
 public:
  constexpr FunctionView() noexcept = default;
  constexpr FunctionView(std::nullptr_t) noexcept {}

  template <class Callable>
    requires(!std::is_same_v<std::remove_cvref_t<Callable>, FunctionView> &&
             std::is_invocable_r_v<Result, Callable&, Arguments...>)
  FunctionView(Callable&& callable) noexcept {
    using Target = std::remove_reference_t<Callable>;
    if constexpr (detail::NullableCallable<std::remove_cvref_t<Callable>>) {
      if (!callable) return;
    }
    if constexpr (std::is_function_v<Target>) {
      target_.function = reinterpret_cast<void (*)()>(&callable);
      invoke_ = [](Storage target, Arguments... arguments) -> Result {
        return static_cast<Result>(
            reinterpret_cast<Target*>(target.function)(std::forward<Arguments>(arguments)...));
      };
    } else if constexpr (std::is_member_function_pointer_v<std::remove_cv_t<Target>>) {
      target_.object = const_cast<void*>(static_cast<const void*>(std::addressof(callable)));
      invoke_ = [](Storage target, Arguments... arguments) -> Result {
        return static_cast<Result>(detail::callMember(*static_cast<Target*>(target.object),
                                                      std::forward<Arguments>(arguments)...));
      };
    } else {
      target_.object = const_cast<void*>(static_cast<const void*>(std::addressof(callable)));
      invoke_ = [](Storage target, Arguments... arguments) -> Result {
        return static_cast<Result>(
            (*static_cast<Target*>(target.object))(std::forward<Arguments>(arguments)...));
      };
    }
  }

  explicit operator bool() const noexcept { return invoke_ != nullptr; }
  Result operator()(Arguments... arguments) const {
    if (!invoke_) [[unlikely]]
      detail::stopForNilCall();
    return invoke_(target_, std::forward<Arguments>(arguments)...);
  }

 private:
  union Storage {
    void* object;
    void (*function)();
  };
  Storage target_{nullptr};
  Result (*invoke_)(Storage, Arguments...) = nullptr;
};

}  // namespace zeb
