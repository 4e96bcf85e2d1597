#pragma once

#include <Observation/ObservableCore.h>
#include <Observation/ObservableInput.h>
#include <Observation/Observer.h>
#include <Observation/ObserverQueue.h>
#include <Observation/detail/ObjectBridging.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Memory/Block.h>

#include <concepts>
#include <cstdint>
#include <functional>
#include <optional>
#include <type_traits>
#include <utility>

namespace zeb {

namespace detail {
template <class T, class U>
class MappedObservable;
template <class T>
class FilteredObservable;
}  // namespace detail

/// A value that changes, and passes each new value to its observers on queues of their choice. A
/// producer pushes values into the `ObservableInput` that is made with it.
///
///     auto [input, progress] = Observable<double>::create(0.0);
///     auto observer = progress->observe([](double value) { … });  // keep the token
///     input.update(0.5);
///
/// An observer gets the current value first, if there is one, and then every later one, as `const
/// T&` of one value that all observers share. Observers are never called from within `observe` or
/// `update`. On a serial queue they get values in the order of the pushes; the order among
/// observers is not promised. A callback that throws ends the process, as in any block of a queue.
///
/// It lives as long as it has an owner: the caller, a token, or an observable made from it. `T` can
/// be anything that can be moved. Everything may be called from any thread, also from callbacks.
template <class T>
class Observable : public detail::ObservableCore {
 public:
  /// An observable, without a current value unless one is given, and its input. When the observable
  /// is destroyed, `deinitEvent` is called with its `hashValue`, on the thread that released it.
  static std::pair<ObservableInput<T>, Ref<Observable>> create(
      std::optional<T> initialValue = std::nullopt,
      Block<void(std::intptr_t)> deinitEvent = nullptr) {
    const auto observable = Ref<Observable>::adopt(
        new Observable(boxed(std::move(initialValue)), std::move(deinitEvent)));
    return {ObservableInput<T>(observable), observable};
  }

  /// Calls the closure until the token is dropped or removed; on the shared main queue, or on the
  /// given one (nil means the main one).
  [[nodiscard]] Ref<Observer<T>> observe(Block<void(const T& value)> update) {
    return observe(nullptr, std::move(update));
  }
  [[nodiscard]] Ref<Observer<T>> observe(const Ref<ObserverQueue>& queue,
                                         Block<void(const T& value)> update) {
    auto observer = makeRef<Observer<T>>(Ref(this), std::move(update));
    registerObserver(observer, queue);
    return observer;
  }

  /// Ends the registration a little later; from then on the token does not keep the observable
  /// alive. Does nothing for nil, another observable's token, or one that was removed before.
  void remove(const Ref<Observer<T>>& observer) {
    if (observer) unregisterObserver(observer->hashValue());
  }

  /// An observable of the mapping's results for every value, the current one included. The mapping
  /// is called on the queue; without one, on the main dispatch queue.
  template <class Mapping>
  [[nodiscard]] auto map(const Ref<ObserverQueue>& queue, Mapping mapping) {
    using U = std::decay_t<std::invoke_result_t<Mapping&, const T&>>;
    if (detail::isNilCallable(mapping)) raiseInvalidArgument("a map needs a mapping");
    const auto mapped = makeRef<detail::MappedObservable<T, U>>();
    mapped->sourceObserver =
        observe(orMainQueue(queue),
                [target = WeakRef(mapped), mapping = std::move(mapping)](const T& value) mutable {
                  if (const auto observable = target.lock())
                    observable->push(std::invoke(mapping, value));
                });
    return Ref<Observable<U>>(mapped);
  }
  template <class Mapping>
  [[nodiscard]] auto map(Mapping mapping) {
    return map(nullptr, std::move(mapping));
  }

  /// An observable of the values that pass the predicate, the current one included. The predicate
  /// is called on the queue; without one, on the main dispatch queue.
  [[nodiscard]] Ref<Observable> filter(const Ref<ObserverQueue>& queue,
                                       Block<bool(const T& value)> predicate) {
    if (!predicate) raiseInvalidArgument("a filter needs a predicate");
    const auto filtered = makeRef<detail::FilteredObservable<T>>();
    filtered->sourceObserver = observeBoxed(
        orMainQueue(queue), [target = WeakRef<Observable>(filtered),
                             predicate = std::move(predicate)](const Ref<NSObject>& boxedValue) {
          const auto observable = target.lock();
          if (!observable || !predicate(ObservedValue<T>::in(*boxedValue))) return;
          observable->pushBoxed(boxedValue);
        });
    return filtered;
  }
  [[nodiscard]] Ref<Observable> filter(Block<bool(const T& value)> predicate) {
    return filter(nullptr, std::move(predicate));
  }

  using ObservableCore::addObserver;
  [[nodiscard]] Ref<NSObject> addObserver(const Ref<ObserverQueue>& queue,
                                          ObjectUpdate update) final {
    if (!update) return observeBoxed(queue, nullptr);
    return observeBoxed(queue, [update = std::move(update)](const Ref<NSObject>& boxedValue) {
      update(detail::bridgedObject<T>(boxedValue));
    });
  }
  void removeObserver(const Value& observer) final {
    const Ref<Observer<T>> mine = observer.object<Observer<T>>();
    if (!mine) raiseTypeMismatch(typeid(Observer<T>), observer);
    remove(mine);
  }

 protected:
  Observable(Ref<NSObject> boxedValue, Block<void(std::intptr_t)> deinitEvent)
      : ObservableCore(std::move(boxedValue), std::move(deinitEvent)) {}

 private:
  friend class ObservableInput<T>;
  template <class>
  friend class Observable;

  Ref<Observer<T>> observeBoxed(const Ref<ObserverQueue>& queue,
                                Block<void(const Ref<NSObject>& boxedValue)> update) {
    auto observer = makeRef<Observer<T>>(Ref(this), nullptr, std::move(update));
    registerObserver(observer, queue);
    return observer;
  }
  static Ref<NSObject> boxed(std::optional<T> value) {
    if (!value) return nullptr;
    return makeRef<ObservedValue<T>>(std::move(*value));
  }
  /// A new object each time: what is made from observables shares no entry with other observers.
  static Ref<ObserverQueue> orMainQueue(const Ref<ObserverQueue>& queue) {
    return queue ? queue : makeRef<ObserverQueue>(dispatch_get_main_queue());
  }
  void push(T value) { pushBoxed(makeRef<ObservedValue<T>>(std::move(value))); }
};

namespace detail {

template <class T, class U>
class MappedObservable final : public Observable<U> {
 public:
  MappedObservable() : Observable<U>(nullptr, nullptr) {}
  ~MappedObservable() override { ObserverCore::releaseSource(std::move(sourceObserver)); }
  Ref<Observer<T>> sourceObserver;
};

template <class T>
class FilteredObservable final : public Observable<T> {
 public:
  FilteredObservable() : Observable<T>(nullptr, nullptr) {}
  ~FilteredObservable() override { ObserverCore::releaseSource(std::move(sourceObserver)); }
  Ref<Observer<T>> sourceObserver;
};

}  // namespace detail

}  // namespace zeb
