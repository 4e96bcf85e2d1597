#pragma once

#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <string>
#include <type_traits>
#include <utility>

namespace zeb {

template <class Signature>
class Block;

/// Nullable closure that is kept for later; also nil if made of a null function pointer or of an
/// empty wrapper. Copies share one closure and its captured state; the state dies with the last
/// copy, on whichever thread that is. Calling a nil block is a programming error, which stops the
/// process with a message. Calling one block from several threads is as safe as the closure itself.
template <class Result, class... Arguments>
class Block<Result(Arguments...)> {
 public:
  Block() noexcept = default;
  Block(std::nullptr_t) noexcept {}

  template <class Callable>
    requires(!std::is_same_v<std::remove_cvref_t<Callable>, Block> &&
             std::is_invocable_r_v<Result, std::decay_t<Callable>&, Arguments...>)
  Block(Callable&& callable) {
    if constexpr (detail::NullableCallable<std::remove_cvref_t<Callable>>) {
      if (!callable) return;
    }
    closure_ = makeRef<Closure<std::decay_t<Callable>>>(std::forward<Callable>(callable));
  }

  explicit operator bool() const noexcept { return static_cast<bool>(closure_); }
  Result operator()(Arguments... arguments) const {
    if (!closure_) [[unlikely]]
      detail::stopForNilCall();
    return closure_->invoke(std::forward<Arguments>(arguments)...);
  }

  /// "<Block: 0x…>", the same for the copies of one block; "(null)" for nil.
  std::string description() const { return closure_ ? closure_->description() : "(null)"; }

  /// Whether both are the same closure, or both nil.
  bool operator==(const Block& other) const noexcept { return closure_ == other.closure_; }

 private:
  struct ClosureBase : NSObject {
    virtual Result invoke(Arguments... arguments) = 0;
    std::string className() const override { return "Block"; }
    /// A closure is known to its blocks only, so nobody else can retain it when one is left.
    void release() const noexcept {
      isUniquelyReferenced() ? releaseOnlyReference() : NSObject::release();
    }
  };
  template <class Callable>
  struct Closure final : ClosureBase {
    template <class Source>
    explicit Closure(Source&& source) : callable(std::forward<Source>(source)) {}
    Result invoke(Arguments... arguments) override {
      return callable(std::forward<Arguments>(arguments)...);
    }
    Callable callable;
  };

  Ref<ClosureBase> closure_;
};

}  // namespace zeb
