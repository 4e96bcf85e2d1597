#include <ZEBPlatform/Runtime/NSKeyValueCoding.h>
#include <ZEBPlatform/Runtime/NSKeyValueObserving.h>
#include <ZEBPlatform/Runtime/Registration.h>

#include <cstdint>

#include "Bench.h"
#include "ObservationPeers.h"

namespace zeb::bench {

namespace {

/// An object with one property, whose C++ setter notifies the observers.
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

}  // namespace

}  // namespace zeb::bench
