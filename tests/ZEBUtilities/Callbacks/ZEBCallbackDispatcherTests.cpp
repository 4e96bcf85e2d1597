#include <ZEBPlatform/Runtime.h>
#include <ZEBUtilities/Callbacks.h>

#include "Support/Storm.h"

namespace zeb::test {

struct Listener : NSObject {
  Class* classObject() const override {
    const auto plain = [](Listener& self) { self.log += "plain "; };
    const auto nothing = [](Listener&) {};
    static Class* const cls =
        registerClass("Listener", {method("heard:", &Listener::hear), method("heard", plain),
                                   method("heardByAnyThread", nothing)});
    return cls;
  }
  void hear(const Value& userInfo) { log += userInfo.description().utf8() + " "; }
  std::string log;
};

struct CallbackDispatcher : testing::Test {
  auto writes(const char* text) {
    return [this, text](const Value& userInfo) {
      log += text + (userInfo ? userInfo.description().utf8() : "");
    };
  }
  std::string fired(const Value& userInfo = nullptr) {
    current = userInfo;
    dispatcher->fireWithUserInfo(current);
    return std::exchange(log, "");
  }
  std::string log;
  Value current;
  Ref<ZEBCallbackDispatcher> dispatcher = makeRef<ZEBCallbackDispatcher>();
  Ref<Listener> first = makeRef<Listener>();
  Ref<Listener> second = makeRef<Listener>();
};

TEST_F(CallbackDispatcher, CallsBlocksByObserverInTheOrderOfTheirAdding) {
  dispatcher->addObserver(first, writes("a"));
  dispatcher->addObserver(second, writes("b"));
  dispatcher->addObserver(first, writes("c"));
  dispatcher->addObserver(nullptr, writes("never"));
  dispatcher->addObserver(first, nullptr);
  dispatcher->addObserver(first, [this](const Value&) { current = nullptr; });
  EXPECT_EQ(fired("!"), "a!c!b!") << "fired right after adding, with the user info of the call";
  for (const Ref<Listener>& each : {Ref<Listener>(), makeRef<Listener>(), first})
    dispatcher->removeObserver(each);
  EXPECT_EQ(fired(), "b");
  dispatcher->addObserver(first, writes("d"));
  EXPECT_EQ(fired(), "bd");
  second = nullptr;
  EXPECT_EQ(fired(), "d") << "a destroyed observer";
}

TEST_F(CallbackDispatcher, SendsSelectorsAndCallsMembers) {
  dispatcher->addObserver(first, "heard:"_sel);
  dispatcher->addObserver(first, "heard"_sel);
  dispatcher->addObserver(first, &Listener::hear);
  dispatcher->addObserver(first, static_cast<void (Listener::*)(const Value&)>(nullptr));
  dispatcher->fireWithUserInfo(7);
  EXPECT_EQ(first->log, "7 plain 7 ");
}

TEST_F(CallbackDispatcher, BlocksMayAddRemoveFireAndDestroy) {
  bool once = true;
  dispatcher->addObserver(first, [&](const Value&) {
    log += "x";
    if (!std::exchange(once, false)) return;
    dispatcher->addObserver(first, writes("new"));
    dispatcher->removeObserver(second);
    dispatcher->fire();
    log += "|";
  });
  dispatcher->addObserver(second, writes("y"));
  EXPECT_EQ(fired(), "xxnew|y") << "the outer firing has its list";
  EXPECT_EQ(fired(), "xnew");
  dispatcher->addObserver(second, writes("z"));
  dispatcher->addObserver(first, [&](const Value&) { second = nullptr; });
  EXPECT_EQ(fired(), "xnewz") << "collected before its observer was destroyed";
  EXPECT_EQ(fired(), "xnew");
  dispatcher->addObserver(first, [&](const Value&) { dispatcher = nullptr; });
  dispatcher->addObserver(first, writes("last"));
  dispatcher->fire();
  EXPECT_FALSE(dispatcher);
  EXPECT_EQ(log, "xnewlast");
}

TEST_F(CallbackDispatcher, BlocksDieOutsideTheQueue) {
  std::atomic<int> deaths = 0;
  const std::function<void()> ends[] = {[&] { dispatcher->removeObserver(first); },
                                        [&] {
                                          first = nullptr;
                                          dispatcher->fire();
                                        },
                                        [&] { dispatcher = nullptr; }};
  for (int count = 0; const auto& end : ends) {
    const auto fire = [&](void*) { makeRef<ZEBCallbackDispatcher>()->fire(), ++deaths; };
    dispatcher->addObserver(++count == 3 ? second : first,
                            [held = std::shared_ptr<void>(nullptr, fire)](const Value&) {});
    dispatcher->fire();
    end();
    waitUntil([&] { return deaths == count; }, "the block has died");
  }
}

TEST(CallbackDispatcherStorm, ThreadsAddRemoveFireAndDestroy) {
  const auto dispatcher = makeRef<ZEBCallbackDispatcher>();
  const auto steady = makeRef<Listener>();
  std::atomic<int> steadyCalls = 0;
  dispatcher->addObserver(steady, [&](const Value&) { ++steadyCalls; });
  constexpr int rounds = 150;
  storm(4, [&](int seed, std::mt19937&) {
    for (int round = 0; round < rounds; ++round) {
      auto mine = makeRef<Listener>();
      const auto counter = std::make_shared<std::atomic<int>>(0);
      const auto block = [counter, raw = dispatcher.get()](const Value&) {
        ++*counter;
        raw->addObserver(makeRef<Listener>(), "heardByAnyThread"_sel);
      };
      dispatcher->addObserver(mine, block);
      dispatcher->fire();
      EXPECT_GE(counter->load(), 1) << "ordered after this thread's adding";
      if ((round + seed) % 2) {
        dispatcher->removeObserver(mine);
        dispatcher->fire();
      }
    }
  });
  EXPECT_EQ(steadyCalls, 4 * rounds * 3 / 2);
}

}  // namespace zeb::test
