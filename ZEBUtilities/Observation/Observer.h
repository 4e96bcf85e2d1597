#pragma once

#include <Observation/ObservableCore.h>
#include <Observation/ObservedValue.h>
#include <ZEBPlatform/Memory/Block.h>

#include <utility>

namespace zeb {

/// The token of a registration with an observable, made by `Observable<T>::observe`. Dropping it
/// ends the registration: from then on the callback is not called, except for a call that runs
/// already or for the first one. Until the observer is removed, it keeps the observable alive.
template <class T>
class Observer final : public detail::ObserverCore {
 public:
  /// With one of the two closures.
  Observer(Ref<detail::ObservableCore> observable, Block<void(const T& value)> update,
           Block<void(const Ref<NSObject>& boxedValue)> updateBoxed = nullptr)
      : ObserverCore(std::move(observable)),
        update_(std::move(update)),
        updateBoxed_(std::move(updateBoxed)) {}

 private:
  void receive(const Ref<NSObject>& boxedValue) override {
    if (update_) {
      update_(ObservedValue<T>::in(*boxedValue));
    } else if (updateBoxed_) {
      updateBoxed_(boxedValue);
    }
  }

  const Block<void(const T& value)> update_;
  const Block<void(const Ref<NSObject>& boxedValue)> updateBoxed_;
};

}  // namespace zeb
