#include <Observation/ObjectiveCTypeErasedObservable.h>
#include <Observation/Observable.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Runtime/Send.h>

#include "Support/HeldQueue.h"

namespace zeb::test {

/// What observers of the bridge get for a value.
template <class T>
Value bridged(T value) {
  const auto held = makeRef<HeldQueue>();
  Value result;
  auto [input, observable] = Observable<T>::create(std::move(value));
  const auto token = observable->objectiveCBridgedObservable()->addObserverWithDispatchQueue(
      held, [&](const Value& object) { result = object; });
  held->awaitAndRun(1);
  return result;
}

TEST(ZEBObservable, GivesValuesAsObjects) {
  enum class Colour : std::uint8_t { red, green };
  struct Point {
    int x;
  };
  const auto object = makeRef<ObserverQueue>(dispatch_get_main_queue());
  EXPECT_EQ(bridged(Colour::green), 1);
  EXPECT_TRUE(bridged(object).isIdenticalTo(object));
  EXPECT_TRUE(bridged(NSString()).isNil());
  EXPECT_EQ(bridged(Point{7}).object<ObservedValue<Point>>()->value.x, 7);
}

TEST(ZEBObservable, ObservesThroughTheRuntime) {
  auto [input, observable] = Observable<int>::create(1);
  const Value bridge = observable->objectiveCBridgedObservable();
  EXPECT_STREQ(object_getClass(bridge)->name(), "ZEBObservable");
  const auto held = makeRef<HeldQueue>();
  std::vector<Value> onMain, onDispatchQueue, onObserverQueue;
  const auto into = [](std::vector<Value>& values) {
    return ZEBObservable::Update([&values](const Value& value) { values.push_back(value); });
  };
  const Value queue = send(ZEBObserverQueue::runtimeClass(), "initWithDispatchQueue:"_sel, held);
  EXPECT_EQ(send<Ref<ObserverQueue>>(queue, "observerQueue"_sel)->queue(), held);
  Value tokens[] = {
      send(bridge, "addObserverWithUpdate:"_sel, into(onMain)),
      send(bridge, "addObserverWithDispatchQueue:update:"_sel, held, into(onDispatchQueue)),
      send(bridge, "addObserverWithObserverQueue:update:"_sel, queue, into(onObserverQueue)),
      send(bridge, "addObserverWithUpdate:"_sel, nullptr)};
  input.update(2);
  held->awaitAndRun(4);
  runMainQueueUntil([&] { return onMain.size() == 2; });
  for (const Value& token : tokens) send(bridge, "removeObserver:"_sel, token);
  input.update(3);
  held->awaitAndRun(2);
  for (const auto& values : {onMain, onDispatchQueue, onObserverQueue})
    EXPECT_EQ(values, (std::vector<Value>{1, 2}));
  EXPECT_EQ(observable->objectiveCBridgedObservable()
                ->addObserverWithObserverQueue(nullptr, nullptr)
                ->className(),
            "Observer<int>");
  EXPECT_EQ(ObserverQueue::mainQueue()->objectiveCObserverQueue()->observerQueue(),
            ObserverQueue::mainQueue());
}

TEST(ZEBObservable, RefusesTokensOfAnotherTypeAndNil) {
  auto [input, observable] = Observable<int>::create();
  auto [otherInput, other] = Observable<double>::create();
  const auto bridge = observable->objectiveCBridgedObservable();
  const auto token = other->objectiveCBridgedObservable()->addObserverWithUpdate(nullptr);
  const std::pair<Value, const char*> wrong[] = {{token, "zeb::Observer<double>"},
                                                 {other, "zeb::Observable<double>"},
                                                 {"text", "NSString"},
                                                 {nullptr, "nil"}};
  for (const auto& [object, name] : wrong) {
    EXPECT_EQ(raisedText([&] { bridge->removeObserver(object); }),
              std::string(ZEBObservableTypeException) +
                  ": Mismatched observer type: expected zeb::Observer<int>, got " + name);
  }
  EXPECT_EQ(raisedName([] { (void)makeRef<ZEBObservable>(nullptr); }), NSInvalidArgumentException);
  EXPECT_EQ(raisedName([] { (void)makeRef<ZEBObserverQueue>(Ref<ObserverQueue>()); }),
            NSInvalidArgumentException);
}

TEST(ZEBObservableDeathTest, CannotBeMadeOfNothing) {
  const std::string report =
      "Use of unimplemented initializer 'init\\(\\)' for class 'ZEBUtilities\\.ObjectiveC";
  const Value bridge = Observable<int>::create().second->objectiveCBridgedObservable();
  EXPECT_DEATH(send(bridge, "init"_sel), report + "TypeErasedObservable");
  for (const SEL initializer : {"init"_sel, "new"_sel}) {
    EXPECT_DEATH(send(ZEBObservable::runtimeClass(), initializer), report + "TypeErasedObservable");
    EXPECT_DEATH(send(ZEBObserverQueue::runtimeClass(), initializer), report + "ObserverQueue");
  }
}

}  // namespace zeb::test
