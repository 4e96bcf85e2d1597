#include <ZEBUtilities/ZEBUtilities.h>

#include <sstream>

#include "Support/Support.h"

namespace zeb::test {

// Runs in a process of its own, as all tests do, so that no class was used before. Lists the
// selectors that the tests below do not send; those of class methods begin with a plus,
// and with an exclamation mark if the class has no such method.
TEST(Registration, ClassesAreFoundByNameBeforeTheirFirstUse) {
  std::istringstream classes(R"(
    BasicDecodingBuilder;
    ZEBBasicDecodingBuilderRegistry +new encodableNameToDecodingBuilder inFrontOf;
    ZEBEncodable encodableName;
    ZEBObserverQueue init;
    ZEBObservable removeObserver:;
    ZEBStopwatch +init +new timeInterval setStartIntervalSinceLaunch:
      setIntervalSinceLaunchForTimeIntervalMethod:;
    ZEBRecordingStopwatch +initWithName: +initWithName:shortestRecordable: +recordingStopwatches
      +tooSlowRecordingStopwatches +runBlock:withOptionalRecordingStopwatch: total average
      shortestRecordable tooSlow tooSlowMinimumCount;
    ZEBCircularFIFOBuffer !init !new delegate allObjects removeObject peekObject removeAllObjects
      count setSize:;
    ZEBThread +init +new performBlock:synchronous: performBlockSync: performBlockAsync: setName:
      isCurrentThread cancel isCancelled;
    ZEBMainThreadRunLoopDeferredTask !init !new;
    ZEBBackgroundQueue;
    ZEBBackgroundTaskHandle !init !new +initWithIdentifier:name:delegate: identifier name
      delegate setDelegate:;
    ZEBSafeOperation +init +new +zeb_isCompletionBlockNotNilledBugPresent addDependency: isReady
      zeb_clearCompletionBlock;
    ZEBSafeBlockOperation +init +blockOperationWithBlock: addExecutionBlock: start
      setCompletionBlock: zeb_clearCompletionBlock;
    ZEBSafeInvocationOperation setCompletionBlock: zeb_clearCompletionBlock;
    ZEBKVODispatcher
      +initToObserveValueForKeyPath:ofWeakObject:options:context:suspended:withDispatchBlock:
      keyPath object weakObject dispatchBlock options setSuspendDispatching:;
    ZEBCallbackDispatcher +new addObserver:selector: removeObserver: fire;
    ZEBDeallocHook +initWithCallback: +unattachFrom:forKey: callback setCallback: removeCallback;
    ZEBWeakValueObject +withValue: setValue:;
    ZEBJSONSerialization +encodeJSONObject:options:completion: +decodeJSONData:options:completion:;
    ZEBTimer !init !new
      +initWithFireDate:interval:target:selector:userInfo:block:repeats:backgroundingBehavior:
      setBlock: applyToQueue: scheduleWithCurrentRunLoop setFireDate: setTolerance:;
    KeychainItemUtils +getPasswordForUsername:andServiceName:accessGroup:error:
      +storeUsername:andPassword:forServiceName:accessGroup:updateExisting:error:
      +deleteItemForUsername:andServiceName:accessGroup:error: +loggingChannel;
    ZEBKeychain !init !new +initWithConfiguration: +sharedKeychain +isDomainEqual:
      +createSharedKeychainWithConfiguration:
      +createSharedKeychainWithDefaultOrvaneConfiguration setProviderServiceName:
      setProviderSharedAccessGroup: setProviderDefaultAccessGroup:
      deletePasswordForUsername:serviceName:accessGroup:completionBlock:
      fetchPasswordForUsername:serviceName:accessGroup:completionBlock:;
    ZEBKeychainDefaultOrvaneConfiguration +new serviceName sharedAccessGroup defaultAccessGroup;
    ZEBRSAOperations +publicKeyTagForUserid: +privateKeyTagForUserid:
      +publicKeyQueryDictionaryForUserid: +privateKeyQueryDictionaryForUserid:
      +generateKeyPairForUser: +deleteKeyPairForUser: +signData:forUser: +base64PublicKeyForUser:;
    ZEBSecurityKey +generateSeed +hashStringWithSeed:count:length:
      +addsKeyCount:forUser:withServiceName: +getsKeyCountForUser:withServiceName:
      +setsKeyCount:forUser:withServiceName: +delsKeyCountForUser:withServiceName:
      +addsKeySeed:forUser:withServiceName: +getsKeySeed:withServiceName:
      +setsKeySeed:forUser:withServiceName: +delsKeySeedForUser:withServiceName:
      +addloginVerificationEnabled:forUser:withServiceName:
      +getsloginVerificationEnabled:withServiceName:
      +setsloginVerificationEnabled:forUser:withServiceName:
      +delloginVericiationEnabledForUser:withServiceName:
      +addsLoginVerificationMode:forUser:withServiceName:
      +getsLoginVerificationMode:withServiceName:
      +setsLoginVerificationMode:forUser:withServiceName:
      +delsLoginVerificationModeForUser:withServiceName: +addsTOTPKey:forUser:withServiceName:
      +getsTOTPKeyForUser:withServiceName: +setsTOTPKey:forUser:withServiceName:
      +delsTOTPKeyForUser:withServiceName:;)");
  for (std::string line; std::getline(classes, line, ';');) {
    std::istringstream words(line);
    std::string name;
    words >> name;
    Class* const cls = objc_lookUpClass(name);
    ASSERT_TRUE(cls) << name;
    for (std::string word; words >> word;) {
      const bool isOfClass = word[0] == '+' || word[0] == '!';
      const SEL selector = sel_registerName(word.substr(isOfClass));
      EXPECT_EQ(!(isOfClass ? class_getClassMethod : class_getInstanceMethod)(cls, selector),
                word[0] == '!')
          << name << " " << word;
    }
  }
}

struct Listener : NSObject {
  Class* classObject() const override {
    static Class* const cls = registerClass("Listener", {method("fired:", &Listener::fired)});
    return cls;
  }
  void fired(const Ref<ZEBTimer>&) { ++firings; }
  int firings = 0;
};

// Sends the class methods of ZEBTimer. The name of the selector tells which arguments it takes and
// where the timer runs: nowhere yet, on the run loop, or on a queue.
TEST(Registration, TimersAreMadeThroughTheRuntime) {
  Class* const cls = objc_lookUpClass("ZEBTimer");
  const auto loop = NSRunLoop::currentRunLoop();
  const auto isOnLoop = [&loop] { return !loop->limitDateForMode(NSDefaultRunLoopMode).isNil(); };
  const auto listener = makeRef<Listener>();
  int blocks = 0, made = 0;
  const NSDictionary arguments{
      {"initWithFireDate", NSDate::distantFuture()},
      {"queuedTimerOnQueue", dispatch_queue_create("timers")},
      {"target", listener},
      {"selector", "fired:"},
      {"userInfo", "info"},
      {"block", detail::asValue(ZEBTimerBlock([&](const Ref<ZEBTimer>&) { ++blocks; }))},
      {"repeats", true},
      {"backgroundingBehavior", detail::asValue(ZEBTimerBackgroundingBehaviorPause)}};
  for (const std::string start :
       {"timerWithTimeInterval:", "scheduledTimerWithTimeInterval:",
        "queuedTimerOnQueue:withTimeInterval:", "initWithFireDate:interval:"}) {
    for (const bool hasTarget : {false, true}) {
      for (const char* end : {"repeats:", "repeats:backgroundingBehavior:"}) {
        const std::string name = start + (hasTarget ? "target:selector:userInfo:" : "block:") + end;
        const SEL selector = sel_registerName(name);
        const Method method = class_getClassMethod(cls, selector);
        if (!method) continue;
        SCOPED_TRACE(name);
        std::vector<Value> list;
        std::istringstream parts(name);
        for (std::string part; std::getline(parts, part, ':');)
          list.push_back(arguments.contains(part) ? arguments[part] : 3600);
        const Value timer = method_getImplementation(method)(Ref<Class>(cls), selector, list);
        EXPECT_EQ(isOnLoop(), name.starts_with("scheduled"));
        send(timer, "scheduleWithRunLoop:mode:"_sel, loop, nullptr);
        EXPECT_EQ(isOnLoop(), !name.starts_with("queued"));
        EXPECT_EQ(send<bool>(timer, "backgroundingBehavior"_sel), name.ends_with("Behavior:"));
        listener->firings = blocks = 0;
        send(timer, "fire"_sel);
        EXPECT_TRUE(blocks == !hasTarget && listener->firings == hasTarget);
        EXPECT_EQ(send(timer, "userInfo"_sel), hasTarget ? Value("info") : Value());
        EXPECT_TRUE(send<bool>(timer, "repeats"_sel) && send<bool>(timer, "isValid"_sel));
        send(timer, "invalidate"_sel);
        ++made;
      }
    }
  }
  EXPECT_EQ(made, 14);
}

struct Delegate : NSObject, ZEBCircularFIFOBufferDelegate {
  void circularFIFOBuffer(ZEBCircularFIFOBuffer&, const Value& object) override { purged = object; }
  Value purged;
};

Value sendTo(const char* name, SEL selector, const auto&... arguments) {
  return send(objc_lookUpClass(name), selector, arguments...);
}

// One message for each kind of arguments, to objects that are made by the names of their classes.
TEST(Registration, MessagesReachObjectsOfAllClasses) {
  int calls = 0;
  const Block<void()> block = [&] { ++calls; };
  const void* const key = &calls;
  NSMutableArray seen;

  const Value watch = sendTo("ZEBStopwatch", "initWithTimeIntervalSinceStart:"_sel, 3600);
  EXPECT_GE(send<double>(watch, "timeIntervalSinceStart"_sel), 3600);
  const Value slow = sendTo("ZEBRecordingStopwatch",
                            "initWithName:shortestRecordable:tooSlow:tooSlowMinimumCount:"_sel,
                            "slow", 0.0, 1e-12, 2);
  send(slow, "runBlock:"_sel, block);
  EXPECT_TRUE(calls == 1 && send(slow, "count"_sel) == 1 && send(slow, "name"_sel) == "slow");

  const Value buffer = sendTo("ZEBCircularFIFOBuffer", "initWithSize:"_sel, 1);
  const auto delegate = makeRef<Delegate>();
  send(buffer, "setDelegate:"_sel, delegate);
  EXPECT_EQ(raisedName([&] { send(buffer, "setDelegate:"_sel, watch); }),
            "NSInvalidArgumentException");
  for (const char* object : {"old", "new"}) send(buffer, "addObject:"_sel, object);
  EXPECT_EQ(delegate->purged, "old");

  EXPECT_TRUE(sendTo("ZEBBackgroundQueue", "sharedBackgroundQueue"_sel));
  const Value task = sendTo("ZEBMainThreadRunLoopDeferredTask", "initWithTask:"_sel, block);
  send<Block<void()>>(task, "task"_sel)();
  const Value call = sendTo("ZEBSafeInvocationOperation", "initWithTarget:selector:object:"_sel,
                            "text", "stringByAppendingString:"_sel, "!");
  send(call, "start"_sel);
  EXPECT_EQ(send(call, "result"_sel), "text!");

  const ZEBKVODispatcher::DispatchBlock note = [&](const NSString&, const Value&,
                                                   const KeyValueChange& change, void* context) {
    if (context == key) seen.addObject(change.newValue());
  };
  const Value observer = sendTo(
      "ZEBKVODispatcher",
      "initToObserveValueForKeyPath:ofObject:options:context:suspended:withDispatchBlock:"_sel,
      "startIntervalSinceLaunch", watch, NSKeyValueObservingOptionNew, key, false, note);
  send(watch, "setStartIntervalSinceLaunch:"_sel, 5.0);
  send(observer, "observeValueForKeyPath:ofObject:change:context:"_sel, "startIntervalSinceLaunch",
       watch, NSDictionary{{NSKeyValueChangeNewKey, "direct"}}, send(observer, "context"_sel));
  const Value dispatcher = sendTo("ZEBCallbackDispatcher", "init"_sel);
  send(dispatcher, "addObserver:usingBlock:"_sel, watch,
       ZEBCallbackDispatcher::CallbackBlock([&](const Value& info) { seen.addObject(info); }));
  send(dispatcher, "fireWithUserInfo:"_sel, "now");
  EXPECT_EQ(seen, (NSArray{5.0, "direct", "now"}));

  auto object = makeRef<Listener>();
  const Value box = sendTo("ZEBWeakValueObject", "initWithValue:"_sel, object);
  EXPECT_TRUE(send(box, "value"_sel).isIdenticalTo(object));
  sendTo("ZEBDeallocHook", "attachTo:forKey:callback:"_sel, object, key, block);
  object = nullptr;
  EXPECT_TRUE(calls == 3 && send(box, "value"_sel).isNil());

  NSError error;
  const auto read = "JSONObjectWithData:permitMainThread:options:error:"_sel;
  const char* const json = "ZEBJSONSerialization";
  const Value data = sendTo(json, "dataWithJSONObject:options:error:"_sel, seen, 0, &error);
  EXPECT_EQ(sendTo(json, read, data, true, 0, nullptr), seen);
  sendTo(json, "JSONObjectWithData:options:error:"_sel, NSData::dataWithBytes("[1"), 0, &error);
  EXPECT_EQ(error.domain(), NSCocoaErrorDomain);
}

struct Model : ZEBObjCEncodable {
  Class* classObject() const override { return ZEBObjCEncodable::runtimeClass(); }
  NSString encodableName() const override { return "Model"; }
  void encodeWithEncoder(ZEBEncoder& encoder) const override {
    if (!isSent) return encoder.encodeString("text", "field");
    send(makeRef<Model>(), "encodeWithEncoder:"_sel, &encoder);
  }
  bool isSent = false;
};

TEST(Registration, EncodablesAndBuildersAnswerThroughTheRuntime) {
  const auto model = makeRef<Model>();
  const NSData data = ZEBArchiver().archivedData(model);
  model->isSent = true;
  EXPECT_EQ(ZEBArchiver().archivedData(model), data);
  EXPECT_EQ(raisedName([] { send(makeRef<Model>(), "encodeWithEncoder:"_sel, nullptr); }),
            "NSInvalidArgumentException");

  const Value empty = send(objc_lookUpClass("ZEBBasicDecodingBuilderRegistry"), "init"_sel);
  const auto spec = BuilderSpec::objCBuildFunction(
      "Model", [](ZEBDecoder&) -> Ref<ZEBObjCEncodable> { return makeRef<Model>(); });
  const Value registry = makeRef<BasicDecodingBuilderRegistry>(
      std::initializer_list<BuilderSpec>{spec}, empty.object<DecodingBuilderRegistry>());
  const SEL find = "decodingBuilderForEncodableName:"_sel;
  EXPECT_EQ(send(send(registry, find, "Model"), "encodableName"_sel), "Model");
}

}  // namespace zeb::test
