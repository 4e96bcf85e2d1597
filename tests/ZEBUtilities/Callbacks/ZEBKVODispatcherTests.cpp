#include <ZEBPlatform/Runtime.h>
#include <ZEBUtilities/Callbacks.h>

#include "Support/Support.h"
#include "Support/Track.h"

namespace zeb::test {

struct KVODispatcher : testing::Test {
  Ref<ZEBKVODispatcher> observe(bool suspended,
                                NSKeyValueObservingOptions options = NSKeyValueObservingOptionNew) {
    return ZEBKVODispatcher::initToObserveValueForKeyPath_ofWeakObject(
        "plays", track, options, &context, suspended,
        [this](const NSString& keyPath, const Value& object, const NSDictionary& change,
               void* given) {
          EXPECT_TRUE(keyPath == "plays" && object == track && given == &context);
          seen += change["new"].description().utf8() + " ";
        });
  }
  void play(int plays) { send(track, "setPlays:"_sel, plays); }

  std::string seen;
  int context = 0;
  Ref<Track> track = makeRef<Track>();
};

TEST_F(KVODispatcher, DispatchesUnlessSuspendedOrGone) {
  auto dispatcher = observe(true);
  for (const bool suspended : {true, false, true}) {
    for (int i = 0; i < 2; ++i) dispatcher->setSuspendDispatching(suspended);
    play(suspended ? 3 : 2);
  }
  EXPECT_EQ(seen, "2 ");
  EXPECT_TRUE(dispatcher->suspendDispatching() && !dispatcher->object() &&
              dispatcher->weakObject() == track);
  dispatcher = observe(false, NSKeyValueObservingOptionNew | NSKeyValueObservingOptionInitial);
  play(4);
  dispatcher = nullptr;
  play(5);
  EXPECT_EQ(seen, "2 3 4 ");
}

TEST_F(KVODispatcher, AFailedResumeLeavesNothingBehind) {
  int calls = 0;
  const auto dispatcher = ZEBKVODispatcher::initToObserveValueForKeyPath_ofWeakObject(
      "plays", track, NSKeyValueObservingOptionInitial, nullptr, true, [&](auto&&...) {
        if (++calls == 1) raiseInvalidArgument("not yet");
      });
  EXPECT_THROW(dispatcher->setSuspendDispatching(false), NSException);
  EXPECT_TRUE(dispatcher->suspendDispatching());
  dispatcher->setSuspendDispatching(false);
  play(1);
  EXPECT_EQ(calls, 3) << "then once initially and once for the change";
}

TEST_F(KVODispatcher, KeepsItsObjectAliveWhenAskedTo) {
  auto dispatcher = ZEBKVODispatcher::initToObserveValueForKeyPath_ofObject(
      "plays", track, 0, nullptr, false, [](auto&&...) {});
  const WeakRef<Track> weak(track);
  track = nullptr;
  EXPECT_TRUE(weak.lock() && dispatcher->object());
  dispatcher = nullptr;
  EXPECT_FALSE(weak.lock());
}

TEST_F(KVODispatcher, SaysWhatIsWrong) {
  const ZEBKVODispatcher::DispatchBlock block = [](auto&&...) {};
  for (const auto& [keyPath, object, given] :
       {std::tuple(NSString(), track, block), {"plays", nullptr, block}, {"plays", track, nullptr}})
    EXPECT_EQ(raisedText([&] {
                (void)ZEBKVODispatcher::initToObserveValueForKeyPath_ofWeakObject(
                    keyPath, object, 0, nullptr, false, given);
              }),
              "NSInvalidArgumentException: Must provide keyPath, object and dispatchBlock");
  const auto dispatcher = observe(false);
  const KeyValueChange change(nullptr, nullptr, false);
  EXPECT_EQ(
      raisedText([&] { dispatcher->observeValueForKeyPath("other", track, change, nullptr); }),
      "NSInternalInconsistencyException: Observed keyPath doesn't match registered keyPath");
  track = nullptr;
  EXPECT_EQ(raisedText([&] { dispatcher->setSuspendDispatching(true); }),
            "NSGenericException: Unable to remove KVO for keyPath ZEBKVODispatcher,  you need to "
            "remove all references to this plays before observee is deallocated.");
  EXPECT_TRUE(dispatcher->suspendDispatching());
}

TEST_F(KVODispatcher, StopsTheProcessWhenItOutlivesItsObject) {
  EXPECT_DEATH(
      {
        auto dispatcher = observe(false);
        track = nullptr;
        dispatcher = nullptr;
      },
      "^Unable to remove KVO for keyPath ZEBKVODispatcher,  you need");
}

}  // namespace zeb::test
