#include <Observation/Observable.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Dispatch/DispatchSemaphore.h>
#include <ZEBPlatform/Runtime/NSKeyValueCoding.h>
#include <ZEBPlatform/Runtime/NSKeyValueObserving.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Callbacks/ZEBCallbackDispatcher.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "Bench.h"
#include "ObservationBench.h"

#if ZEB_BENCH_HAVE_SIGNALS2
#include <boost/signals2/signal.hpp>
#endif

namespace zeb::bench {

namespace {

constexpr std::size_t observers = 10;

#if !ZEB_BENCH_HAVE_QT
}  // namespace
std::unique_ptr<QtObservation> makeQtObservation(std::size_t) { return nullptr; }
namespace {
#endif

/// An object with one property, which tells its observers itself when it is set from C++.
class Subject final : public NSObject {
 public:
  Class* classObject() const override {
    static Class* const cls = registerClass(
        "BenchSubject",
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

class Adder final : public NSObject, public NSKeyValueObserver {
 public:
  void observeValueForKeyPath(const NSString&, const Value&, const KeyValueChange& change,
                              void*) override {
    sum += change.newValue().integerValue();
  }
  std::int64_t sum = 0;
};

const Case kvoChange("kvo.change", [](Report& report) {
  const auto qt = makeQtObservation(0);
  if (!qt) return report.skip("Qt");
  const auto subject = makeRef<Subject>();
  const auto adder = makeRef<Adder>();
  addObserver(subject, adder, "value", NSKeyValueObservingOptionNew);
  constexpr std::int64_t changes = 1000;
  const auto repeated = [](auto change) {
    return [change] {
      for (std::int64_t number = 1; number <= changes; ++number) change(number);
    };
  };
  const auto ours = repeated([&](std::int64_t number) { subject->setValue(number); });
  const auto theirs = repeated([&](std::int64_t number) { qt->setValue(number); });
  ours();
  theirs();
  require(adder->sum == qt->sum(), "the sums differ");
  report.add(nanosecondsEach("setter in C++, option New", "Qt property, setter in C++",
                             measureInTurns(ours, theirs), changes));
  const auto oursByName =
      repeated([&](std::int64_t number) { setValueForKey(subject, number, "value"); });
  const auto theirsByName = repeated([&](std::int64_t number) { qt->setValueByName(number); });
  report.add(nanosecondsEach("setValueForKey, option New", "Qt setProperty",
                             measureInTurns(oursByName, theirsByName), changes));
});

const Case observableUpdate("observable.update", [](Report& report) {
  const auto qt = makeQtObservation(observers);
  if (!qt) return report.skip("Qt");
  constexpr std::size_t updates = 1000;
  const auto queue = makeRef<ObserverQueue>(dispatch_queue_create("bench"));
  const auto [input, observable] = Observable<std::int64_t>::create();
  const dispatch_semaphore_t done = dispatch_semaphore_create(0);
  std::size_t called = 0;
  std::vector<Ref<Observer<std::int64_t>>> tokens;
  for (std::size_t number = 0; number < observers; ++number) {
    tokens.push_back(observable->observe(queue, [&](std::int64_t) {
      if (++called == observers * updates) dispatch_semaphore_signal(done);
    }));
  }
  const auto ours = [&, &input = input] {
    dispatch_sync(queue->queue(), [&] { called = 0; });
    for (std::size_t number = 0; number < updates; ++number) {
      input.update(static_cast<std::int64_t>(number));
    }
    dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
  };
  report.add(nanosecondsEach("10 observers on one queue", "Qt queued signal, 10 receivers",
                             measureInTurns(ours, [&] { qt->emitQueued(updates); }), updates));
});

const Case callbackFire("callback.fire", [](Report& report) {
#if ZEB_BENCH_HAVE_SIGNALS2
  const auto dispatcher = makeRef<ZEBCallbackDispatcher>();
  std::vector<Ref<Subject>> alive;
  std::vector<std::shared_ptr<int>> theirAlive;
  std::uint64_t ourCalls = 0;
  std::uint64_t theirCalls = 0;
  using Signal = boost::signals2::signal<void(const Value&)>;
  Signal signal, tracking;
  for (std::size_t number = 0; number < observers; ++number) {
    alive.push_back(makeRef<Subject>());
    dispatcher->addObserver(alive.back(), [&ourCalls](const Value&) { ++ourCalls; });
    signal.connect([&theirCalls](const Value&) { ++theirCalls; });
    // Tracked, as ours are: a slot whose owner has died is not called.
    theirAlive.push_back(std::make_shared<int>());
    tracking.connect(Signal::slot_type([&theirCalls](const Value&) {
                       ++theirCalls;
                     }).track_foreign(theirAlive.back()));
  }
  constexpr std::size_t fires = 100;
  const Value info("info");
  const auto ours = [&] {
    for (std::size_t number = 0; number < fires; ++number) dispatcher->fireWithUserInfo(info);
  };
  const auto theirs = [&](Signal& fired) {
    return [&] {
      for (std::size_t number = 0; number < fires; ++number) fired(info);
    };
  };
  ours();
  theirs(signal)();
  require(ourCalls == theirCalls, "not everybody was called");
  report.add(nanosecondsEach("10 weak observers", "Boost.Signals2, plain slots",
                             measureInTurns(ours, theirs(signal)), fires));
  report.add(nanosecondsEach("10 weak observers", "Boost.Signals2, tracking slots",
                             measureInTurns(ours, theirs(tracking)), fires));
#else
  report.skip("Boost.Signals2");
#endif
});

}  // namespace

}  // namespace zeb::bench
