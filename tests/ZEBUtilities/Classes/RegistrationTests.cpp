#include <Foundation/NSDictionary.h>
#include <Runtime/BlockConversion.h>
#include <Runtime/Registration.h>
#include <Runtime/Send.h>
#include <ZEBUtilities/Coding/DecodingBuilderRegistry.h>
#include <ZEBUtilities/Coding/ZEBArchiver.h>
#include <ZEBUtilities/Coding/ZEBEncoderConversion.h>
#include <ZEBUtilities/ZEBTimer.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../../Platform/Support.h"

namespace zeb {
namespace {

// Runs in a process of its own, as all tests do: nothing but the names has been asked for.
TEST(Registration, ClassesAreFoundByNameFromTheStart) {
  const struct {
    const char* name;
    std::vector<std::string> selectors;  // class methods begin with a plus
  } classes[] = {
      {"ZEBBasicDecodingBuilderRegistry",
       {"+init", "inFrontOf", "encodableNameToDecodingBuilder",
        "decodingBuilderForEncodableName:"}},
      {"BasicDecodingBuilder", {"encodableName"}},
      {"ZEBEncodable", {"encodableName", "encodeWithEncoder:"}},
      {"ZEBObserverQueue", {"+initWithDispatchQueue:", "observerQueue", "init"}},
      {"ZEBObservable",
       {"addObserverWithUpdate:", "addObserverWithDispatchQueue:update:",
        "addObserverWithObserverQueue:update:", "removeObserver:", "init"}},
      {"ZEBTimer",
       {"+initWithFireDate:interval:target:selector:userInfo:block:repeats:backgroundingBehavior:",
        "+initWithFireDate:interval:target:selector:userInfo:repeats:backgroundingBehavior:",
        "+initWithFireDate:interval:block:repeats:backgroundingBehavior:",
        "+timerWithTimeInterval:target:selector:userInfo:repeats:",
        "+timerWithTimeInterval:target:selector:userInfo:repeats:backgroundingBehavior:",
        "+timerWithTimeInterval:block:repeats:",
        "+timerWithTimeInterval:block:repeats:backgroundingBehavior:",
        "+scheduledTimerWithTimeInterval:target:selector:userInfo:repeats:",
        "+scheduledTimerWithTimeInterval:target:selector:userInfo:repeats:backgroundingBehavior:",
        "+scheduledTimerWithTimeInterval:block:repeats:",
        "+scheduledTimerWithTimeInterval:block:repeats:backgroundingBehavior:",
        "+queuedTimerOnQueue:withTimeInterval:target:selector:userInfo:repeats:",
        "+queuedTimerOnQueue:withTimeInterval:target:selector:userInfo:repeats:"
        "backgroundingBehavior:",
        "+queuedTimerOnQueue:withTimeInterval:block:repeats:",
        "+queuedTimerOnQueue:withTimeInterval:block:repeats:backgroundingBehavior:",
        "scheduleWithRunLoop:mode:",
        "scheduleWithCurrentRunLoop",
        "applyToQueue:",
        "fire",
        "invalidate",
        "isValid",
        "setFireDate:",
        "setTolerance:",
        "setBlock:",
        "selector"}},
  };
  for (const auto& expected : classes) {
    Class* const cls = objc_lookUpClass(expected.name);
    ASSERT_TRUE(cls) << expected.name;
    for (const std::string& selector : expected.selectors) {
      const Method method = selector[0] == '+'
                                ? class_getClassMethod(cls, sel_registerName(selector.substr(1)))
                                : class_getInstanceMethod(cls, sel_registerName(selector));
      EXPECT_TRUE(method) << expected.name << " " << selector;
    }
  }
  EXPECT_FALSE(objc_lookUpClass("ZEBNothing"));
}

struct Listener : NSObject {
  static Class* runtimeClass() {
    static Class* const cls = registerClass("Listener", {method("fired:", &Listener::fired)});
    return cls;
  }
  Class* classObject() const override { return runtimeClass(); }
  void fired(const Ref<ZEBTimer>&) { ++firings; }
  int firings = 0;
};

TEST(Registration, TimersAreMadeThroughTheRuntime) {
  Class* const cls = objc_lookUpClass("ZEBTimer");
  const auto loop = NSRunLoop::currentRunLoop();
  const auto isOnLoop = [&loop] { return !loop->limitDateForMode(NSDefaultRunLoopMode).isNil(); };
  const auto listener = makeRef<Listener>();
  int blocks = 0;
  const ZEBTimerBlock block = [&blocks](const Ref<ZEBTimer>&) { ++blocks; };
  const auto queue = dispatch_queue_create("timers");
  const NSDate never = NSDate::distantFuture();
  constexpr double hour = 3600;
  constexpr auto pause = ZEBTimerBackgroundingBehaviorPause;
  // Where a timer runs: nowhere yet, on the run loop, or on a queue.
  enum Place { unscheduled, onLoop, onQueue };
  const auto check = [&](Place place, bool pauses, bool hasBlock, const Value& timer) {
    EXPECT_EQ(isOnLoop(), place == onLoop);
    send(timer, "scheduleWithRunLoop:mode:"_sel, loop, nullptr);
    EXPECT_EQ(isOnLoop(), place != onQueue);
    EXPECT_EQ(send<bool>(timer, "backgroundingBehavior"_sel), pauses);
    listener->firings = blocks = 0;
    send(timer, "fire"_sel);
    EXPECT_EQ(blocks, hasBlock);
    EXPECT_EQ(listener->firings, !hasBlock);
    EXPECT_EQ(send(timer, "selector"_sel), hasBlock ? Value() : Value("fired:"));
    EXPECT_EQ(send(timer, "userInfo"_sel), hasBlock ? Value() : Value("info"));
    EXPECT_TRUE(send<bool>(timer, "repeats"_sel) && send<bool>(timer, "isValid"_sel));
    send(timer, "invalidate"_sel);
  };
  const auto target = [&](Place place, bool pauses, SEL selector, const auto&... start) {
    const SEL fired = "fired:"_sel;
    check(place, pauses, false,
          pauses ? send(cls, selector, start..., hour, listener, fired, "info", true, pause)
                 : send(cls, selector, start..., hour, listener, fired, "info", true));
  };
  const auto plain = [&](Place place, bool pauses, SEL selector, const auto&... start) {
    check(place, pauses, true,
          pauses ? send(cls, selector, start..., hour, block, true, pause)
                 : send(cls, selector, start..., hour, block, true));
  };
  target(unscheduled, false, "timerWithTimeInterval:target:selector:userInfo:repeats:"_sel);
  target(unscheduled, true,
         "timerWithTimeInterval:target:selector:userInfo:repeats:backgroundingBehavior:"_sel);
  target(onLoop, false, "scheduledTimerWithTimeInterval:target:selector:userInfo:repeats:"_sel);
  target(
      onLoop, true,
      "scheduledTimerWithTimeInterval:target:selector:userInfo:repeats:backgroundingBehavior:"_sel);
  target(onQueue, false,
         "queuedTimerOnQueue:withTimeInterval:target:selector:userInfo:repeats:"_sel, queue);
  target(
      onQueue, true,
      "queuedTimerOnQueue:withTimeInterval:target:selector:userInfo:repeats:backgroundingBehavior:"_sel,
      queue);
  target(unscheduled, true,
         "initWithFireDate:interval:target:selector:userInfo:repeats:backgroundingBehavior:"_sel,
         never);
  plain(unscheduled, false, "timerWithTimeInterval:block:repeats:"_sel);
  plain(unscheduled, true, "timerWithTimeInterval:block:repeats:backgroundingBehavior:"_sel);
  plain(onLoop, false, "scheduledTimerWithTimeInterval:block:repeats:"_sel);
  plain(onLoop, true, "scheduledTimerWithTimeInterval:block:repeats:backgroundingBehavior:"_sel);
  plain(onQueue, false, "queuedTimerOnQueue:withTimeInterval:block:repeats:"_sel, queue);
  plain(onQueue, true,
        "queuedTimerOnQueue:withTimeInterval:block:repeats:backgroundingBehavior:"_sel, queue);
  plain(unscheduled, true, "initWithFireDate:interval:block:repeats:backgroundingBehavior:"_sel,
        never);
  const Value timer = send(
      cls,
      "initWithFireDate:interval:target:selector:userInfo:block:repeats:backgroundingBehavior:"_sel,
      never, hour, nullptr, nullptr, nullptr, nullptr, true, pause);
  send(timer, "setBlock:"_sel, block);
  send(timer, "applyToQueue:"_sel, queue);
  check(onQueue, true, true, timer);
}

struct Model : ZEBObjCEncodable {
  Class* classObject() const override {
    static Class* const cls = registerClass("Model", ZEBObjCEncodable::runtimeClass());
    return cls;
  }
  NSString encodableName() const override { return "Model"; }
  void encodeWithEncoder(ZEBEncoder& encoder) const override {
    encoder.encodeString("text", "field");
  }
};
struct Forwarder : Model {
  void encodeWithEncoder(ZEBEncoder& encoder) const override {
    send(makeRef<Model>(), "encodeWithEncoder:"_sel, &encoder);
  }
};

TEST(Registration, EncodablesAndBuildersAnswerThroughTheRuntime) {
  EXPECT_EQ(ZEBArchiver().archivedData(makeRef<Forwarder>()),
            ZEBArchiver().archivedData(makeRef<Model>()));
  EXPECT_EQ(send(makeRef<Model>(), "encodableName"_sel), "Model");
  EXPECT_EQ(test::raisedName([] { send(makeRef<Model>(), "encodeWithEncoder:"_sel, nullptr); }),
            "NSInvalidArgumentException");

  const Value empty = send(objc_lookUpClass("ZEBBasicDecodingBuilderRegistry"), "init"_sel);
  const auto spec = BuilderSpec::objCBuildFunction(
      "Model", [](ZEBDecoder&) -> Ref<ZEBObjCEncodable> { return makeRef<Model>(); });
  const Value registry = makeRef<BasicDecodingBuilderRegistry>(
      std::initializer_list<BuilderSpec>{spec}, empty.object<DecodingBuilderRegistry>());
  const SEL find = "decodingBuilderForEncodableName:"_sel;
  EXPECT_EQ(send(send(registry, find, "Model"), "encodableName"_sel), "Model");
  EXPECT_EQ(send<NSDictionary>(registry, "encodableNameToDecodingBuilder"_sel)["Model"],
            Value(spec.decodingBuilder()));
  EXPECT_TRUE(send(registry, find, "Other").isNil());
  EXPECT_TRUE(send(registry, "inFrontOf"_sel).isIdenticalTo(empty));
}

}  // namespace
}  // namespace zeb
