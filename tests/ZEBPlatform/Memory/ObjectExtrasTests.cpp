#include <ZEBPlatform/Memory/WeakRef.h>

#include "Support/Storm.h"

namespace zeb::test {

TEST(WeakRef, TellsEmptyFromAliveFromDead) {
  std::atomic<int> deaths = 0;
  EXPECT_TRUE(WeakRef<Probe>().isEmpty() && WeakRef<Probe>(Ref<Probe>()).isEmpty());
  Ref<Probe> strong = makeRef<Probe>(deaths);
  const WeakRef<Probe> weak(strong);
  Ref<Probe> locked = WeakRef<Probe>(weak).lock();
  strong = nullptr;
  EXPECT_TRUE(locked && deaths == 0 && weak.isAlive());
  locked = nullptr;
  EXPECT_EQ(deaths, 1);
  EXPECT_FALSE(weak.isEmpty() || weak.isAlive() || weak.lock());
}

struct Owner : NSObject {
  ~Owner() override { atDeath(); }
  std::function<void()> atDeath = [] {};
};

TEST(WeakRef, NeverHandsOutADyingObject) {
  int deaths = 0;
  for (const bool isKnownBefore : {false, true}) {
    const Ref<Owner> object = makeRef<Owner>();
    const WeakRef<Owner> before = isKnownBefore ? WeakRef<Owner>(object) : WeakRef<Owner>();
    object->atDeath = [&deaths, before, raw = object.get()] {
      deaths += !before.lock() && !WeakRef<Owner>(raw).lock();
    };
  }
  EXPECT_EQ(deaths, 2);

  struct Unfinished : NSObject {
    explicit Unfinished(WeakRef<Unfinished>& weak) {
      weak = WeakRef<Unfinished>(this);
      throw 1;
    }
  };
  WeakRef<Unfinished> weak;
  EXPECT_THROW((void)makeRef<Unfinished>(weak), int);
  EXPECT_FALSE(weak.lock());
}

/// The first weak reference moves the count of strong references while other threads change it.
TEST(WeakRef, FirstOneAndItsLockRaceRetainAndRelease) {
  std::atomic<int> deaths = 0;
  Ref<Probe> strong[4];
  std::barrier meeting(4);
  storm(4, [&](int thread, std::mt19937& random) {
    for (int round = 0; round < 1000; ++round) {
      if (thread == 0) std::ranges::fill(strong, makeRef<Probe>(deaths));
      meeting.arrive_and_wait();
      for (auto turns = random() % 40; turns > 0; --turns) (void)Ref<Probe>(strong[thread]);
      const WeakRef<Probe> weak(strong[thread]);
      strong[thread] = nullptr;
      for (int turn = 0; turn < 20; ++turn) {
        const Ref<Probe> locked = weak.lock();
        EXPECT_TRUE(!locked || locked->isAlive);
      }
      meeting.arrive_and_wait();
      EXPECT_TRUE(deaths == round + 1 && !weak.lock());
      meeting.arrive_and_wait();
    }
  });
}

const char keys[4] = {};

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
  std::vector<Ref<Owner>> owners(200);
  for (Ref<Owner>& owner : owners) owner = makeRef<Owner>();
  storm(4, [&](int thread, std::mt19937&) {
    for (const Ref<Owner>& owner : owners) {
      for (int i = 0; i < 2; ++i)
        setAssociatedObject(*owner, &keys[thread], makeRef<Probe>(deaths));
      EXPECT_TRUE(associatedObject(*owner, &keys[thread]) && WeakRef<Owner>(owner).lock());
    }
  });
  owners.clear();
  EXPECT_EQ(deaths, 200 * 4 * 2);
}

}  // namespace zeb::test
