#pragma once

#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Runtime/SEL.h>

#include <functional>
#include <type_traits>

namespace zeb {

class ZEBTimer;

/// The method that a timer calls on its target: a selector or a C++ member function, which takes
/// the timer or no argument. Nullable.
///
///     ZEBTimer::timerWithTimeInterval(1.0, player, "tick:"_sel, nullptr, true)
///     ZEBTimer::timerWithTimeInterval(1.0, player, &Player::tick, nullptr, true)
class ZEBTimerAction {
 public:
  ZEBTimerAction(std::nullptr_t = nullptr) noexcept {}
  ZEBTimerAction(SEL selector) noexcept : selector_(selector) {}

  /// The firing throws NSException (NSInvalidArgumentException) if the target is of another class.
  template <class Target, class Function>
    requires std::is_function_v<Function>
  ZEBTimerAction(Function Target::* member) {
    if (!member) return;
    member_ = [member](NSObject& object, const Ref<ZEBTimer>& timer) {
      auto* target = dynamic_cast<Target*>(&object);
      if (!target) raiseInvalidArgument("a timer's target is of another class than its method");
      if constexpr (std::is_invocable_v<Function Target::*, Target&, const Ref<ZEBTimer>&>) {
        std::invoke(member, *target, timer);
      } else {
        std::invoke(member, *target);
      }
    };
  }

  explicit operator bool() const noexcept { return selector_ || member_; }

  /// Nil for a member function.
  SEL selector() const noexcept { return selector_; }

  /// Calls the method. A selector that the target does not implement stops the process.
  void operator()(NSObject& target, const Ref<ZEBTimer>& timer) const;

 private:
  SEL selector_;
  Block<void(NSObject& target, const Ref<ZEBTimer>& timer)> member_;
};

}  // namespace zeb
