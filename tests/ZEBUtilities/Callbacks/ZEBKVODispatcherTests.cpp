#include <ZEBPlatform/Runtime.h>
#include <ZEBUtilities/Callbacks.h>

#include "Support/Support.h"

namespace zeb::test {

struct Dial : NSObject {
  Class* classObject() const override {
    static Class* const cls =
        registerClass("Dial", {property("level", &Dial::level, &Dial::setLevel)});
    return cls;
  }
  int level() const { return level_; }
  void setLevel(int given) { level_ = given; }
  int level_ = 0;
};

struct KVODispatcher : testing::Test {
  Ref<ZEBKVODispatcher> observe(bool suspended,
                                NSKeyValueObservingOptions options = NSKeyValueObservingOptionNew) {
    return ZEBKVODispatcher::initToObserveValueForKeyPath_ofWeakObject(
        "level", dial, options, &context, suspended,
        [this](const NSString& keyPath, const Value& object, const NSDictionary& change,
               void* given) {
          EXPECT_TRUE(keyPath == "level" && object == dial && given == &context);
          seen += change["new"].description().utf8() + " ";
        });
  }
  void turn(int level) { send(dial, "setLevel:"_sel, level); }

  std::string seen;
  int context = 0;
  Ref<Dial> dial = makeRef<Dial>();
};

TEST_F(KVODispatcher, DispatchesUnlessSuspendedOrGone) {
  auto dispatcher = observe(true);
  turn(1);
  for (int i = 0; i < 2; ++i) dispatcher->setSuspendDispatching(false);
  turn(2);
  for (int i = 0; i < 2; ++i) dispatcher->setSuspendDispatching(true);
  turn(3);
  EXPECT_EQ(seen, "2 ");
  EXPECT_TRUE(dispatcher->suspendDispatching() && !dispatcher->object() &&
              dispatcher->weakObject() == dial);
  dispatcher = observe(false, NSKeyValueObservingOptionNew | NSKeyValueObservingOptionInitial);
  turn(4);
  dispatcher = nullptr;
  turn(5);
  EXPECT_EQ(seen, "2 3 4 ");
}

TEST_F(KVODispatcher, AFailedResumeLeavesNothingBehind) {
  bool fails = true;
  const auto dispatcher = ZEBKVODispatcher::initToObserveValueForKeyPath_ofWeakObject(
      "level", dial, NSKeyValueObservingOptionInitial, nullptr, true, [&](auto&&...) {
        if (fails) raiseInvalidArgument("not yet");
        seen += "told ";
      });
  EXPECT_THROW(dispatcher->setSuspendDispatching(false), NSException);
  EXPECT_TRUE(dispatcher->suspendDispatching());
  fails = false;
  dispatcher->setSuspendDispatching(false);
  turn(1);
  EXPECT_EQ(seen, "told told ") << "once initially, once for the change";
}

TEST_F(KVODispatcher, KeepsItsObjectAliveWhenAskedTo) {
  auto dispatcher = ZEBKVODispatcher::initToObserveValueForKeyPath_ofObject(
      "level", dial, 0, nullptr, false, [](auto&&...) {});
  const WeakRef<Dial> weak(dial);
  dial = nullptr;
  EXPECT_TRUE(weak.lock() && dispatcher->object());
  dispatcher = nullptr;
  EXPECT_FALSE(weak.lock());
}

TEST_F(KVODispatcher, SaysWhatIsWrong) {
  const ZEBKVODispatcher::DispatchBlock block = [](auto&&...) {};
  for (const int missing : {0, 1, 2}) {
    const auto make = [&] {
      (void)ZEBKVODispatcher::initToObserveValueForKeyPath_ofWeakObject(
          missing == 0 ? NSString() : "level", missing == 1 ? nullptr : dial, 0, nullptr, false,
          missing == 2 ? nullptr : block);
    };
    EXPECT_EQ(raisedText(make),
              "NSInvalidArgumentException: Must provide keyPath, object and dispatchBlock");
  }
  const auto dispatcher = observe(false);
  const KeyValueChange change(nullptr, nullptr, false);
  EXPECT_EQ(raisedText([&] { dispatcher->observeValueForKeyPath("other", dial, change, nullptr); }),
            "NSInternalInconsistencyException: Observed keyPath doesn't match registered keyPath");
  dial = nullptr;
  EXPECT_EQ(raisedText([&] { dispatcher->setSuspendDispatching(true); }),
            "NSGenericException: Unable to remove KVO for keyPath ZEBKVODispatcher,  you need to "
            "remove all references to this level before observee is deallocated.");
  EXPECT_TRUE(dispatcher->suspendDispatching());
}

TEST_F(KVODispatcher, StopsTheProcessWhenItOutlivesItsObject) {
  EXPECT_DEATH(
      {
        auto dispatcher = observe(false);
        dial = nullptr;
        dispatcher = nullptr;
      },
      "^Unable to remove KVO for keyPath ZEBKVODispatcher,  you need");
}

}  // namespace zeb::test
