#include <ZEBPlatform/Notifications/NSNotificationCenter.h>

#include "Support/Storm.h"

namespace zeb::test {

struct NotificationCenter : testing::Test {
  static Ref<NSObject> object() { return makeRef<NSOperationQueue>(); }
  static NSNotificationCenter::Handler counting(int& calls) {
    return [&calls](const Ref<NSNotification>&) { ++calls; };
  }

  const Ref<NSNotificationCenter> center = makeRef<NSNotificationCenter>();
  const Ref<NSObject> observer = object(), other = object();
  int calls = 0;
  std::atomic<int> deaths = 0;
};

TEST_F(NotificationCenter, DeliversWhatPassesBothFilters) {
  const NSString text("a text that is no short one"), equalText(text.utf8());
  const std::tuple<NSString, Value, int> cases[] = {
      {nullptr, nullptr, 7},  {"A", nullptr, 5}, {"B", nullptr, 2}, {"A", observer, 1},
      {nullptr, observer, 2}, {"A", other, 1},   {"A", text, 1},    {"A", 5, 1},
      {"A", equalText, 0},    {"B", other, 0}};
  int counts[std::size(cases)] = {}, *counter = counts;
  for (const auto& [name, posted, expected] : cases)
    (void)center->addObserverForName(name, posted, nullptr, counting(*counter++));
  for (const Value& posted : {Value(), Value(observer), Value(other), Value(text), Value(5)})
    center->postNotificationName("A", posted);
  center->postNotificationName("B", observer);
  center->postNotificationName("B");
  counter = counts;
  for (const auto& [name, posted, expected] : cases)
    EXPECT_EQ(*counter++, expected) << name << ", " << posted;
}

TEST_F(NotificationCenter, HandsOverTheNotificationAndRefusesNone) {
  Ref<NSNotification> seen;
  center->addObserver(
      observer, [&](const Ref<NSNotification>& notification) { throw seen = notification; }, "A");
  EXPECT_THROW(center->postNotificationName("A", 3, {{"key", "value"}}), Ref<NSNotification>);
  EXPECT_TRUE(seen->name() == "A" && seen->object() == 3 && seen->userInfo()["key"] == "value");
  EXPECT_EQ(raisedName([&] { center->postNotification(nullptr); }), NSInvalidArgumentException);
  EXPECT_EQ(raisedName([&] { center->postNotificationName(nullptr); }), NSInvalidArgumentException);
  center->addObserver(nullptr, [](const auto&) {}, "B");
  center->addObserver(observer, nullptr, "B");
  center->removeObserver(nullptr);
  EXPECT_FALSE(center->addObserverForName("B", nullptr, nullptr, nullptr));
  center->postNotificationName("B");
}

TEST_F(NotificationCenter, KeepsNeitherObserverNorObjectAliveButTheTokensBlock) {
  // A block's captured state tells of its release.
  const auto block = [&] { return [&, state = makeRef<Probe>(deaths)](const auto&) { ++calls; }; };
  center->addObserver(makeRef<Probe>(deaths), block(), "A");
  (void)center->addObserverForName("A", makeRef<Probe>(deaths), nullptr, counting(calls));
  EXPECT_EQ(deaths, 2) << "observer and object";
  center->postNotificationName("A");
  EXPECT_TRUE(calls == 0 && deaths == 3) << "the block, once a post has met it";

  const WeakRef<NSObject> token = center->addObserverForName("B", nullptr, nullptr, block());
  center->postNotificationName("B");
  EXPECT_EQ(calls, 1) << "dropping the token ends nothing";
  center->removeObserver(token.lock());
  EXPECT_EQ(deaths, 4);

  for (int i = 0; i < 10'000; ++i) center->addObserver(makeRef<Probe>(deaths), block(), "C");
  EXPECT_GT(deaths, 4 + 10'000 + 9'000) << "the dead are looked for while others come";
}

TEST_F(NotificationCenter, RemovesWhatIsAskedFor) {
  const std::tuple<NSString, Value, int> cases[] = {{nullptr, nullptr, 0}, {"A", nullptr, 1},
                                                    {"A", other, 2},       {nullptr, other, 2},
                                                    {"C", nullptr, 3},     {"C", other, 3}};
  for (const auto& [name, posted, expected] : cases) {
    int strangersCalls = calls = 0;
    center->addObserver(observer, counting(calls), "A");
    center->addObserver(observer, counting(calls), "A", other);
    center->addObserver(observer, counting(calls), nullptr);
    center->addObserver(other, counting(strangersCalls), "A");
    center->removeObserver(observer, name, posted);
    center->postNotificationName("A", other);
    EXPECT_TRUE(calls == expected && strangersCalls == 1) << name << ", " << posted;
    for (const auto& each : {observer, other}) center->removeObserver(each);
  }
}

/// One observer of many names, and many of one: looking through all of them each time would take
/// minutes.
TEST_F(NotificationCenter, RemovingOneCostsTheSameAmongMany) {
  std::vector<std::pair<NSString, Ref<NSObject>>> others;
  for (int i = 0; i < 30'000; ++i) {
    const auto& [name, each] = others.emplace_back(std::to_string(i), object());
    center->addObserver(observer, counting(calls), name);
    center->addObserver(each, counting(calls), "A");
  }
  for (const auto& [name, each] : others) {
    center->removeObserver(observer, name, nullptr);
    center->removeObserver(each, "A", nullptr);
    center->postNotificationName(name);
  }
  center->postNotificationName("A");
  EXPECT_EQ(calls, 0);
}

TEST_F(NotificationCenter, MayBeChangedFromWithinADelivery) {
  Ref<NSObject> first = object(), removed = object(), dead = object();
  int lateCalls = 0;
  const auto change = [&](const Ref<NSNotification>&) {
    if (++calls > 1) return;
    center->removeObserver(removed);
    dead = nullptr;
    center->addObserver(first, counting(lateCalls), "A");
    center->postNotificationName("A");
    center->removeObserver(first);
    first = nullptr;  // whose block is running
  };
  for (const Ref<NSObject>* each : {&first, &removed, &dead})
    center->addObserver(*each, change, "A");
  center->postNotificationName("A");
  EXPECT_TRUE(calls == 2 && lateCalls == 1) << "the inner post meets the first and the late one";

  auto dropped = makeRef<NSNotificationCenter>();
  const WeakRef<NSNotificationCenter> weak(dropped);
  (void)dropped->addObserverForName("A", nullptr, nullptr, [&](auto&) {
    dropped = nullptr;
    EXPECT_TRUE(weak.lock()) << "the post still needs the centre";
  });
  dropped->postNotificationName("A");
}

TEST_F(NotificationCenter, WhatDiesWithARemovalMayUseTheCentre) {
  int ends = 0;
  (void)center->addObserverForName("ended", nullptr, nullptr, counting(ends));
  std::vector<Ref<NSObject>> tokens;
  for (int i = 0; i < 4; ++i) {
    const std::shared_ptr<void> end(nullptr, [&](auto) { center->postNotificationName("ended"); });
    tokens.push_back(center->addObserverForName("A", nullptr, nullptr, [end](auto&) {}));
  }
  // Removed registrations stay in the list for the name until they are half of it.
  for (const auto& token : tokens) center->removeObserver(token);
  tokens.clear();
  EXPECT_EQ(ends, 4);

  // A removed token keeps neither its filter nor its queue.
  auto queue = makeRef<NSOperationQueue>();
  const WeakRef<NSOperationQueue> weakQueue(queue);
  const auto token = center->addObserverForName("A", NSArray{Value(makeRef<Probe>(deaths))}, queue,
                                                counting(ends));
  queue = nullptr;
  center->removeObserver(token);
  EXPECT_TRUE(deaths == 1 && !weakQueue.lock());
}

TEST_F(NotificationCenter, DeliversOnAQueueLaterAndNotToTheRemoved) {
  const auto queue = makeRef<NSOperationQueue>();
  queue->setMaxConcurrentOperationCount(1);
  queue->setSuspended(true);
  std::vector<Value> seen;
  const auto note = [&](const Ref<NSNotification>& notification) {
    if (NSOperationQueue::currentQueue() == queue) seen.push_back(notification->object());
  };
  (void)center->addObserverForName("A", nullptr, queue, note);
  const Ref<NSObject> removed = center->addObserverForName("A", nullptr, queue, note);
  for (int i = 0; i < 3; ++i) center->postNotificationName("A", i);
  center->removeObserver(removed);
  queue->setSuspended(false);
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_EQ(seen, (std::vector<Value>{0, 1, 2}));
}

/// The threads add, remove, post and drop, in blocks as well, at observers that die meanwhile.
TEST_F(NotificationCenter, StandsThreadsThatAddPostRemoveAndDestroy) {
  std::atomic<int> made = 0, posted = 0;
  storm(4, [&](int, std::mt19937& random) {
    std::vector<Ref<Probe>> mine;
    for (int step = 0; step < 3000; ++step) {
      const NSString name = random() % 2 ? "A" : "B";
      if (const auto action = random() % 5; action < 2) {
        ++made;
        mine.push_back(makeRef<Probe>(deaths));
        center->addObserver(
            mine.back(),
            [&, probe = mine.back().get(), removes = random() % 8 == 0](const auto&) {
              EXPECT_TRUE(probe->isAlive);
              if (++posted % 256 == 0) center->postNotificationName("A");
              if (removes) center->removeObserver(Ref(probe));
            },
            random() % 4 ? name : nullptr);
      } else if (action == 2) {
        center->postNotificationName(name);
      } else if (action == 3 && !mine.empty()) {
        center->removeObserver(mine[random() % mine.size()]);
      } else if (mine.size() > 8) {
        mine.erase(mine.begin(), mine.begin() + 6);
      }
    }
  });
  EXPECT_GT(posted, 1000);
  EXPECT_EQ(deaths, made);
}

}  // namespace zeb::test
