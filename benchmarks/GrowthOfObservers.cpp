#include <Observation/Observable.h>
#include <ZEBPlatform/Dispatch/DispatchSemaphore.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBPlatform/Runtime/NSKeyValueObserving.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Callbacks/ZEBCallbackDispatcher.h>

#include "Bench.h"
#include "Growth.h"

namespace zeb::bench {

namespace {

class Subject final : public NSObject {
 public:
  Class* classObject() const override {
    static Class* const cls = registerClass(
        "GrowthSubject",
        {property("value", &Subject::value, &Subject::setValue, KeyValueNotification::manual)});
    return cls;
  }
  std::int64_t value() const { return value_; }
  void setValue(std::int64_t value) {
    const KeyValueChangeScope change(*this, "value");
    value_ = value;
  }

 private:
  std::int64_t value_ = 0;
};

class Watcher final : public NSObject, public NSKeyValueObserver {
 public:
  void observeValueForKeyPath(const NSString&, const Value&, const KeyValueChange& change,
                              void*) override {
    consume(change);
  }
};

using Watchers = std::vector<Ref<Watcher>>;

Watchers makeWatchers(std::size_t count) {
  Watchers watchers;
  while (watchers.size() < count) watchers.push_back(makeRef<Watcher>());
  return watchers;
}

/// The observers of one property of one object.
struct KeyValueObservers {
  explicit KeyValueObservers(std::size_t count) : observers(makeWatchers(count)) {}
  void addAll() {
    for (const auto& observer : observers) {
      addObserver(subject, observer, "value", NSKeyValueObservingOptionNew);
    }
  }
  void removeAll() {
    for (const auto& observer : observers) removeObserver(subject, observer, "value");
  }
  void notifyAll() { subject->setValue(1); }

  Ref<Subject> subject = makeRef<Subject>();
  Watchers observers;
};

/// The observers of one name at one centre.
struct NotificationObservers {
  explicit NotificationObservers(std::size_t count) : observers(makeWatchers(count)) {}
  void addAll() {
    for (const auto& observer : observers) {
      const auto receive = [](const Ref<NSNotification>& notification) { consume(notification); };
      center->addObserver(observer, receive, name);
    }
  }
  void removeAll() {
    for (const auto& observer : observers) center->removeObserver(observer);
  }
  void notifyAll() { center->postNotificationName(name); }

  Ref<NSNotificationCenter> center = makeRef<NSNotificationCenter>();
  NSString name = "growth";
  Watchers observers;
};

/// Additions and removals are carried out on a queue, so each function waits by firing.
struct CallbackObservers {
  explicit CallbackObservers(std::size_t count) : observers(makeWatchers(count)) {}
  void addAll() {
    for (const auto& observer : observers) {
      dispatcher->addObserver(observer, [](const Value& userInfo) { consume(userInfo); });
    }
    notifyAll();
  }
  void removeAll() {
    for (const auto& observer : observers) dispatcher->removeObserver(observer);
    notifyAll();
  }
  void notifyAll() { dispatcher->fire(); }

  Ref<ZEBCallbackDispatcher> dispatcher = makeRef<ZEBCallbackDispatcher>();
  Watchers observers;
};

/// Observers of one observable value on one queue. Registrations and updates are carried out on
/// queues, so each function waits for its effect.
struct ValueObservers {
  explicit ValueObservers(std::size_t count) : observers(count) {}
  void addAll() {
    for (auto& observer : observers) {
      observer = observable->observe(queue, [](std::int64_t value) { consume(value); });
    }
    wait();
  }
  void removeAll() {
    for (auto& observer : observers) observer = nullptr;
    wait();
  }
  void notifyAll() {
    created.first.update(1);
    wait();
  }
  /// A new observer is called when all that was asked for before has been done.
  void wait() {
    const dispatch_semaphore_t done = dispatch_semaphore_create(0);
    const auto last =
        observable->observe(queue, [done](std::int64_t) { dispatch_semaphore_signal(done); });
    dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
  }

  std::pair<ObservableInput<std::int64_t>, Ref<Observable<std::int64_t>>> created =
      Observable<std::int64_t>::create(0);
  Ref<Observable<std::int64_t>> observable = created.second;
  Ref<ObserverQueue> queue = makeRef<ObserverQueue>(dispatch_queue_create("growth"));
  std::vector<Ref<Observer<std::int64_t>>> observers;
};

template <class Observers>
Observers makeRegistered(std::size_t count) {
  Observers observers(count);
  observers.addAll();
  observers.observers = fromBothEnds(observers.observers);
  return observers;
}

/// The three lines of one kind of observers.
template <class Observers>
struct ObserverCases {
  ObserverCases(const std::string& name, const std::string& notification)
      : adding(GrowthPlot::registration, name + ".add", makeInput<Observers>,
               [](Observers& observers) { observers.addAll(); }),
        removing(GrowthPlot::registration, name + ".remove", makeRegistered<Observers>,
                 [](Observers& observers) { observers.removeAll(); }),
        notifying(GrowthPlot::notification, name + "." + notification, makeRegistered<Observers>,
                  [](Observers& observers) { observers.notifyAll(); }) {}

  GrowthCase adding, removing, notifying;
};

const ObserverCases<KeyValueObservers> keyValue("kvo", "change");
const ObserverCases<NotificationObservers> notifications("notification", "post");
const ObserverCases<CallbackObservers> callbacks("callback", "fire");
const ObserverCases<ValueObservers> values("observable", "update");

}  // namespace

}  // namespace zeb::bench
