#pragma once

#include <ZEBPlatform/Memory/WeakRef.h>

#include <utility>

namespace zeb {

template <class T>
class Observable;

/// The producer's end of an observable, made by `Observable<T>::create` (Observation/Observable.h).
/// It does not keep the observable alive: values that are pushed after its end are dropped
/// silently, and so are all values that are pushed into a default-constructed input. A value type;
/// copies feed the same observable.
template <class T>
class ObservableInput {
 public:
  ObservableInput() = default;

  /// Makes the value the current one and passes it to all observers, later and on their own queues.
  /// Equal values count as new ones. Any thread; values that one thread pushes arrive in this
  /// order.
  void update(T value) const {
    if (const Ref<Observable<T>> observable = observable_.lock()) {
      observable->push(std::move(value));
    }
  }

 private:
  friend class Observable<T>;
  explicit ObservableInput(const Ref<Observable<T>>& observable) : observable_(observable) {}

  WeakRef<Observable<T>> observable_;
};

}  // namespace zeb
