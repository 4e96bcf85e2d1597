#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBUtilities/Callbacks/ZEBKVODispatcher.h>

#include "Support/Support.h"

namespace zeb {
namespace {

static_assert(!std::is_default_constructible_v<ZEBKVODispatcher>);

struct Dial : NSObject {
  Class* classObject() const override {
    static Class* const cls =
        registerClass("Dial", {property(
                                  "level", [](const Dial& self) { return self.level; },
                                  [](Dial& self, int given) { self.level = given; })});
    return cls;
  }
  int level = 0;
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
  dispatcher->setSuspendDispatching(false);
  dispatcher->setSuspendDispatching(false);
  turn(2);
  dispatcher->setSuspendDispatching(true);
  dispatcher->setSuspendDispatching(true);
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
      "level", dial, NSKeyValueObservingOptionInitial, nullptr, true,
      [&](const NSString&, const Value&, const KeyValueChange&, void*) {
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
      "level", dial, 0, nullptr, false,
      [this](const NSString&, const Value&, const KeyValueChange&, void*) { seen += "told "; });
  const WeakRef<Dial> weak(dial);
  turn(1);
  dial = nullptr;
  EXPECT_TRUE(weak.lock() && dispatcher->object());
  dispatcher = nullptr;
  EXPECT_FALSE(weak.lock());
  EXPECT_EQ(seen, "told ");
}

TEST_F(KVODispatcher, SaysWhatIsWrong) {
  const auto block = [](const NSString&, const Value&, const KeyValueChange&, void*) {};
  const auto make = [&](const NSString& keyPath, const Ref<Dial>& object,
                        ZEBKVODispatcher::DispatchBlock call) {
    return ZEBKVODispatcher::initToObserveValueForKeyPath_ofWeakObject(keyPath, object, 0, nullptr,
                                                                       false, call);
  };
  const auto dispatcher = make("level", dial, block);
  const struct {
    std::function<void()> call;
    const char* what;
  } cases[] = {
      {[&] { (void)make(nullptr, dial, block); },
       "NSInvalidArgumentException: Must provide keyPath, object and dispatchBlock"},
      {[&] { (void)make("level", nullptr, block); },
       "NSInvalidArgumentException: Must provide keyPath, object and dispatchBlock"},
      {[&] { (void)make("level", dial, nullptr); },
       "NSInvalidArgumentException: Must provide keyPath, object and dispatchBlock"},
      {[&] {
         dispatcher->observeValueForKeyPath("other", dial, KeyValueChange(nullptr, nullptr, false),
                                            nullptr);
       },
       "NSInternalInconsistencyException: Observed keyPath doesn't match registered keyPath"},
      {[&] {
         dial = nullptr;
         dispatcher->setSuspendDispatching(true);
       },
       "NSGenericException: Unable to remove KVO for keyPath ZEBKVODispatcher,  you need to remove "
       "all "
       "references to this level before observee is deallocated."},
  };
  for (const auto& one : cases) {
    try {
      one.call();
      ADD_FAILURE() << one.what;
    } catch (const NSException& exception) {
      EXPECT_STREQ(exception.what(), one.what);
    }
  }
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

}  // namespace
}  // namespace zeb
