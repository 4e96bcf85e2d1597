#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Runtime/BlockConversion.h>
#include <ZEBPlatform/Runtime/ErrorConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBUtilities/Callbacks/ZEBCallbackDispatcher.h>
#include <ZEBUtilities/Callbacks/ZEBKVODispatcher.h>
#include <ZEBUtilities/Coding/DecodingBuilderRegistry.h>
#include <ZEBUtilities/Coding/ZEBArchiver.h>
#include <ZEBUtilities/Coding/ZEBEncoderConversion.h>
#include <ZEBUtilities/Collections/ZEBCircularFIFOBuffer.h>
#include <ZEBUtilities/Tasks/ZEBBackgroundQueue.h>
#include <ZEBUtilities/Tasks/ZEBBackgroundTaskHandle.h>
#include <ZEBUtilities/Timing/ZEBTimer.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Support/Support.h"

namespace zeb {
namespace {

// Runs in a process of its own, as all tests do, so that no class was used before.
TEST(Registration, ClassesAreFoundByNameBeforeTheirFirstUse) {
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
      {"ZEBStopwatch", {"+init", "setIntervalSinceLaunchForTimeIntervalMethod:"}},
      {"ZEBRecordingStopwatch",
       {"+initWithName:shortestRecordable:", "total", "average", "shortestRecordable", "tooSlow",
        "tooSlowMinimumCount"}},
      {"ZEBCircularFIFOBuffer",
       {"removeObject", "peekObject", "removeAllObjects", "count", "setSize:"}},
      {"ZEBThread", {"+init", "performBlockSync:", "performBlockAsync:", "setName:"}},
      {"ZEBBackgroundTaskHandle", {"identifier", "name", "delegate", "setDelegate:"}},
      {"ZEBSafeOperation", {"+new", "+zeb_isCompletionBlockNotNilledBugPresent"}},
      {"ZEBSafeBlockOperation", {"+init", "addExecutionBlock:", "zeb_clearCompletionBlock"}},
      {"ZEBSafeInvocationOperation", {"setCompletionBlock:", "zeb_clearCompletionBlock"}},
      {"ZEBKVODispatcher",
       {"+initToObserveValueForKeyPath:ofWeakObject:options:context:suspended:withDispatchBlock:",
        "keyPath", "object", "weakObject", "dispatchBlock", "options", "suspendDispatching"}},
      {"ZEBCallbackDispatcher", {"+new", "addObserver:selector:"}},
      {"ZEBDeallocHook", {"callback", "setCallback:"}},
      {"ZEBWeakValueObject", {"+withValue:", "setValue:"}},
      {"ZEBJSONSerialization",
       {"+encodeJSONObject:options:completion:", "+decodeJSONData:options:completion:"}},
      // The test below sends ZEBTimer's other selectors.
      {"ZEBTimer", {"scheduleWithCurrentRunLoop", "setFireDate:", "setTolerance:"}},
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
  target(onQueue, true,
         "queuedTimerOnQueue:withTimeInterval:target:selector:userInfo:repeats:"
         "backgroundingBehavior:"_sel,
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

struct Plain : NSObject {};

struct Delegate : NSObject, ZEBCircularFIFOBufferDelegate, ZEBBackgroundTaskHandleDelegate {
  void circularFIFOBuffer(ZEBCircularFIFOBuffer&, const Value& purgedObject) override {
    told.addObject(purgedObject);
  }
  void backgroundTaskHandleWillBeDeallocated(const NSString& identifier) override {
    told.addObject(identifier);
  }
  NSMutableArray told;
};

// Makes and uses an object of each class through the runtime. Each result shows whether the
// messages arrived.
TEST(Registration, ObjectsOfAllClassesAreMadeAndUsedThroughTheRuntime) {
  static int calls;
  static const int place = 0;
  static constexpr const void* key = &place;
  static const Block<void()> block = [] { ++calls; };
  const struct {
    const char* name;
    Value (*use)(Class* cls);
    Value expected;
  } uses[] = {
      {"ZEBStopwatch",
       [](Class* cls) -> Value {
         const Value watch = send(cls, "initWithTimeIntervalSinceStart:"_sel, 3600);
         return send<double>(watch, "timeInterval"_sel) >= 3600 &&
                send<double>(watch, "timeInterval"_sel) < 3600 &&
                send<double>(send(cls, "new"_sel), "timeIntervalSinceStart"_sel) < 3600;
       },
       true},
      {"ZEBRecordingStopwatch",
       [](Class* cls) -> Value {
         const Value watch =
             send(cls, "initWithName:shortestRecordable:tooSlow:tooSlowMinimumCount:"_sel, "parse",
                  0.0, 1e-12, 2);
         const Value other = send(cls, "initWithName:"_sel, "other");
         send(watch, "runBlock:"_sel, block);
         send(cls, "runBlock:withOptionalRecordingStopwatch:"_sel, block, watch);
         EXPECT_EQ(send(watch, "count"_sel), Value(calls));
         EXPECT_EQ(send(cls, "recordingStopwatches"_sel),
                   NSArray::arrayWithObjects({watch, other}));
         return send(send(send(cls, "tooSlowRecordingStopwatches"_sel), "lastObject"_sel),
                     "name"_sel);
       },
       "parse"},
      {"ZEBCircularFIFOBuffer",
       [](Class* cls) -> Value {
         const Value buffer = send(cls, "initWithSize:"_sel, 1);
         const auto delegate = makeRef<Delegate>();
         send(buffer, "setDelegate:"_sel, delegate);
         EXPECT_EQ(test::raisedName([&] { send(buffer, "setDelegate:"_sel, makeRef<Plain>()); }),
                   "NSInvalidArgumentException");
         EXPECT_TRUE(send(buffer, "delegate"_sel).isIdenticalTo(delegate));
         send(buffer, "addObject:"_sel, "old");
         send(buffer, "addObject:"_sel, "new");
         EXPECT_EQ(delegate->told, NSArray::arrayWithObjects({"old"}));
         return send(buffer, "allObjects"_sel);
       },
       NSArray::arrayWithObjects({"new"})},
      {"ZEBThread",
       [](Class* cls) -> Value {
         static Value thread;
         thread = send(cls, "new"_sel);
         static bool isOnThread;
         send(thread, "performBlock:synchronous:"_sel,
              Block<void()>([] { isOnThread = send<bool>(thread, "isCurrentThread"_sel); }), true);
         send(thread, "cancel"_sel);
         return isOnThread && send<bool>(std::exchange(thread, {}), "isCancelled"_sel);
       },
       true},
      {"ZEBMainThreadRunLoopDeferredTask",
       [](Class* cls) -> Value {
         send<Block<void()>>(send(cls, "initWithTask:"_sel, block), "task"_sel)();
         return calls;
       },
       1},
      {"ZEBBackgroundQueue", [](Class* cls) { return send(cls, "sharedBackgroundQueue"_sel); },
       ZEBBackgroundQueue::sharedBackgroundQueue()},
      {"ZEBBackgroundTaskHandle",
       [](Class* cls) -> Value {
         const auto delegate = makeRef<Delegate>();
         send(cls, "initWithIdentifier:name:delegate:"_sel, "id", "name", delegate);
         return delegate->told;
       },
       NSArray::arrayWithObjects({"id"})},
      {"ZEBSafeOperation",
       [](Class* cls) -> Value {
         const Value first = send(cls, "init"_sel);
         const Value second = send(cls, "init"_sel);
         send(second, "addDependency:"_sel, first);
         EXPECT_FALSE(send<bool>(second, "isReady"_sel));
         for (const Value& operation : {first, second}) {
           send(operation, "setCompletionBlock:"_sel, block);
           if (operation.isIdenticalTo(second)) send(operation, "zeb_clearCompletionBlock"_sel);
           send(operation, "start"_sel);
         }
         return calls;
       },
       1},
      {"ZEBSafeBlockOperation",
       [](Class* cls) -> Value {
         const Value operation = send(cls, "blockOperationWithBlock:"_sel, block);
         send(operation, "setCompletionBlock:"_sel, block);
         send(operation, "start"_sel);
         return calls;
       },
       2},
      {"ZEBSafeInvocationOperation",
       [](Class* cls) {
         const Value operation = send(cls, "initWithTarget:selector:object:"_sel, "text",
                                      "stringByAppendingString:"_sel, "!");
         send(operation, "start"_sel);
         return send(operation, "result"_sel);
       },
       "text!"},
      {"ZEBKVODispatcher",
       [](Class* cls) -> Value {
         static NSMutableArray seen;
         const Value watch = send(objc_lookUpClass("ZEBStopwatch"), "new"_sel);
         const ZEBKVODispatcher::DispatchBlock note =
             [](const NSString&, const Value&, const KeyValueChange& change, void* context) {
               if (context == key) seen.addObject(change.newValue());
             };
         const Value dispatcher = send(
             cls,
             "initToObserveValueForKeyPath:ofObject:options:context:suspended:"
             "withDispatchBlock:"_sel,
             "startIntervalSinceLaunch", watch, NSKeyValueObservingOptionNew, key, false, note);
         send(watch, "setStartIntervalSinceLaunch:"_sel, 5.0);
         send(dispatcher, "observeValueForKeyPath:ofObject:change:context:"_sel,
              "startIntervalSinceLaunch", watch, NSDictionary{{NSKeyValueChangeNewKey, "direct"}},
              send(dispatcher, "context"_sel));
         send(dispatcher, "setSuspendDispatching:"_sel, true);
         send(watch, "setStartIntervalSinceLaunch:"_sel, 6.0);
         return seen;
       },
       NSArray::arrayWithObjects({5.0, "direct"})},
      {"ZEBCallbackDispatcher",
       [](Class* cls) -> Value {
         static Value heard;
         const Value dispatcher = send(cls, "init"_sel);
         const auto observer = makeRef<Plain>();
         send(dispatcher, "addObserver:usingBlock:"_sel, observer,
              ZEBCallbackDispatcher::CallbackBlock([](const Value& info) { heard = info; }));
         send(dispatcher, "fireWithUserInfo:"_sel, "now");
         send(dispatcher, "removeObserver:"_sel, observer);
         send(dispatcher, "fire"_sel);
         return heard;
       },
       "now"},
      {"ZEBDeallocHook",
       [](Class* cls) -> Value {
         const auto attach = [cls](const Ref<NSObject>& object) {
           send(cls, "attachTo:forKey:callback:"_sel, object, key, block);
         };
         attach(makeRef<Plain>());
         const auto object = makeRef<Plain>();
         attach(object);
         send(cls, "unattachFrom:forKey:"_sel, object, key);
         send(send(cls, "initWithCallback:"_sel, block), "removeCallback"_sel);
         return calls;
       },
       1},
      {"ZEBWeakValueObject",
       [](Class* cls) {
         Ref<NSObject> object = makeRef<Plain>();
         const Value box = send(cls, "initWithValue:"_sel, object);
         EXPECT_TRUE(send(box, "value"_sel).isIdenticalTo(object));
         object = nullptr;
         return send(box, "value"_sel);
       },
       nullptr},
      {"ZEBJSONSerialization",
       [](Class* cls) -> Value {
         NSError error;
         const Value data = send(cls, "dataWithJSONObject:options:error:"_sel,
                                 NSArray::arrayWithObjects({1}), 0, nullptr);
         EXPECT_EQ(send(cls, "JSONObjectWithData:permitMainThread:options:error:"_sel, data, true,
                        0, &error),
                   NSArray::arrayWithObjects({1}));
         EXPECT_TRUE(error.isNil());
         const NSData half = NSData::dataWithBytes("[1");
         EXPECT_TRUE(send(cls, "JSONObjectWithData:options:error:"_sel, half, 0, &error).isNil());
         return error.domain();
       },
       NSCocoaErrorDomain},
  };
  for (const auto& one : uses) {
    SCOPED_TRACE(one.name);
    Class* const cls = objc_lookUpClass(one.name);
    ASSERT_TRUE(cls);
    calls = 0;
    EXPECT_EQ(one.use(cls), one.expected);
  }
}

TEST(Registration, ClassesWithoutPlainInitialiserStopTheProcess) {
  for (const char* name : {"ZEBTimer", "ZEBMainThreadRunLoopDeferredTask",
                           "ZEBBackgroundTaskHandle", "ZEBCircularFIFOBuffer"}) {
    for (const char* selector : {"init", "new"}) {
      EXPECT_DEATH(send(objc_lookUpClass(name), sel_registerName(selector)),
                   std::string("\\+\\[") + name + " " + selector +
                       "\\]: unrecognized selector sent to class");
    }
  }
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
