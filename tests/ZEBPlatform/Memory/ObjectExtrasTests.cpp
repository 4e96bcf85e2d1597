#include <ZEBPlatform/Memory/WeakRef.h>

#include <barrier>
#include <thread>

#include "Support/Support.h"

namespace zeb::test {

TEST(WeakRef, TellsEmptyFromAliveFromDead) {
  std::atomic<int> deaths = 0;
  EXPECT_TRUE(WeakRef<Probe>().isEmpty() && WeakRef<Probe>(Ref<Probe>()).isEmpty());
  Ref<Probe> strong = makeRef<Probe>(deaths);
  const WeakRef<Probe> weak(strong);
  const WeakRef<Probe> copy = weak;
  Ref<Probe> locked = copy.lock();
  strong = nullptr;
  EXPECT_TRUE(locked && deaths == 0 && weak.isAlive());
  locked = nullptr;
  EXPECT_EQ(deaths, 1);
  EXPECT_FALSE(weak.isEmpty() || weak.isAlive() || weak.lock() || copy.lock());
}

struct LooksAtItself : NSObject {
  ~LooksAtItself() override { *found = before.lock() || WeakRef<LooksAtItself>(this).lock(); }
  WeakRef<LooksAtItself> before;
  bool* found = nullptr;
};

TEST(WeakRef, NeverHandsOutADyingObject) {
  bool found[] = {true, true};
  for (const int round : {0, 1}) {
    const Ref<LooksAtItself> object = makeRef<LooksAtItself>();
    object->found = &found[round];
    if (round == 1) object->before = WeakRef<LooksAtItself>(object);
  }
  EXPECT_FALSE(found[0] || found[1]);
}

TEST(WeakRef, LockRacesTheLastRelease) {
  constexpr int rounds = 1000;
  std::atomic<int> deaths = 0;
  std::atomic<int> deadOnesHandedOut = 0;
  WeakRef<Probe> weak;
  std::barrier meeting(4);
  const auto lockers = [&] {
    for (int round = 0; round < rounds; ++round) {
      meeting.arrive_and_wait();
      for (int turn = 0; turn < 20; ++turn) {
        const Ref<Probe> locked = weak.lock();
        if (locked && !locked->isAlive) ++deadOnesHandedOut;
      }
      meeting.arrive_and_wait();
    }
  };
  std::thread threads[] = {std::thread(lockers), std::thread(lockers), std::thread(lockers)};
  for (int round = 0; round < rounds; ++round) {
    Ref<Probe> strong = makeRef<Probe>(deaths);
    weak = strong;
    meeting.arrive_and_wait();
    strong = nullptr;
    meeting.arrive_and_wait();
    EXPECT_EQ(deaths, round + 1);
    EXPECT_FALSE(weak.lock());
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(deadOnesHandedOut, 0);
}

const char keys[4] = {};

struct Owner : NSObject {
  ~Owner() override {
    if (atDeath) atDeath();
  }
  std::function<void()> atDeath;
};

TEST(AssociatedObject, LivesUntilReplacementRemovalOrTheOwnersDeath) {
  std::atomic<int> deaths = 0;
  Ref<Owner> owner = makeRef<Owner>();
  for (const char& key : keys) setAssociatedObject(*owner, &key, makeRef<Probe>(deaths));
  setAssociatedObject(*owner, &keys[0], makeRef<Probe>(deaths));
  setAssociatedObject(*owner, &keys[1], nullptr);
  EXPECT_TRUE(deaths == 2 && !associatedObject(*owner, &keys[1]));
  Ref<NSObject> kept = associatedObject(*owner, &keys[3]);
  const WeakRef<Owner> weak(owner);  // must not delay the associated objects' release
  owner = nullptr;
  EXPECT_EQ(deaths, 4);
  kept = nullptr;
  EXPECT_EQ(deaths, 5);
}

TEST(AssociatedObject, IsReleasedAfterTheOwnersOwnDestructorAndMayLookBack) {
  std::string log;
  std::atomic<int> lateDeaths = 0;
  Ref<Owner> owner = makeRef<Owner>();
  Ref<Owner> associated = makeRef<Owner>();
  const auto dies = [&, address = owner.get()](const char* name, const char* key) {
    log += associatedObject(*address, &keys[0]) ? "still " : "gone ";
    log += name;
    setAssociatedObject(*address, key, makeRef<Probe>(lateDeaths));
  };
  owner->atDeath = [&] { dies("owner ", &keys[1]); };
  associated->atDeath = [&] { dies("associated", &keys[2]); };
  setAssociatedObject(*owner, &keys[0], std::move(associated));
  owner = nullptr;
  EXPECT_EQ(log, "still owner gone associated");
  EXPECT_EQ(lateDeaths, 2);
}

TEST(AssociatedObject, TakesManyThreadsAtOnce) {
  std::atomic<int> deaths = 0;
  for (int round = 0; round < 100; ++round) {
    Ref<Owner> owner = makeRef<Owner>();
    std::vector<std::thread> threads;
    for (const char& key : keys) {
      threads.emplace_back([&] {
        setAssociatedObject(*owner, &key, makeRef<Probe>(deaths));
        setAssociatedObject(*owner, &key, makeRef<Probe>(deaths));
        EXPECT_TRUE(associatedObject(*owner, &key) && WeakRef<Owner>(owner).lock());
      });
    }
    for (std::thread& thread : threads) thread.join();
    owner = nullptr;
    ASSERT_EQ(deaths, (round + 1) * 2 * 4);
  }
}

}  // namespace zeb::test
