#include <ZEBUtilities/Callbacks.h>

#include "Support/Storm.h"

namespace zeb::test {

TEST(ZEBDeallocHook, RunsWhenItsOwnerDiesUnlessTakenAway) {
  const char keys[3] = {};
  std::string log;
  std::atomic<int> deaths = 0;
  Ref<NSObject> owner = makeRef<Probe>(deaths);
  const auto hook = [&](const char* text) {
    return [&log, &deaths, text] { log += text + std::to_string(deaths); };
  };
  ZEBDeallocHook::attachTo(owner, &keys[0], hook("first"));
  ZEBDeallocHook::attachTo(owner, &keys[0], hook(" second"));
  ZEBDeallocHook::attachTo(owner, &keys[1], hook(" unheard"));
  ZEBDeallocHook::attachTo(nullptr, &keys[1], hook(" unheard"));
  EXPECT_EQ(log, "first0") << "replaced";
  const auto box = ZEBWeakValueObject::withValue(nullptr);
  box->setValue(owner);
  setAssociatedObject(*owner, &keys[2], box);
  ZEBDeallocHook::unattachFrom(owner, &keys[1]);
  ZEBDeallocHook::unattachFrom(owner, &keys[2]);
  EXPECT_TRUE(associatedObject(*owner, &keys[2]) && box->value() == owner) << "not a hook";
  ZEBDeallocHook::unattachFrom(nullptr, &keys[0]);
  owner = nullptr;
  EXPECT_FALSE(box->value());

  auto changed = makeRef<ZEBDeallocHook>(hook(" unheard"));
  changed->removeCallback();
  EXPECT_FALSE(changed->callback());
  changed->setCallback(hook(" third"));
  changed = nullptr;
  EXPECT_EQ(log, "first0 second1 third1");
}

TEST(ZEBDeallocHook, IsTakenAwayByOneOfManyAndLeavesNewOnesAlone) {
  static const char key = 0;
  // The callback's captured state dies while its hook is unattached, and attaches another one.
  std::atomic<int> calls = 0;
  auto owner = makeRef<ZEBWeakValueObject>(nullptr);
  const auto attach = [&](void*) { ZEBDeallocHook::attachTo(owner, &key, [&] { ++calls; }); };
  ZEBDeallocHook::attachTo(owner, &key,
                           [held = std::shared_ptr<void>(nullptr, attach)] { FAIL(); });
  ZEBDeallocHook::unattachFrom(owner, &key);
  EXPECT_EQ(calls, 0) << "the new hook stays";
  owner = nullptr;

  std::vector<Ref<ZEBWeakValueObject>> owners(2000);
  std::atomic<int> deaths = 0;
  for (auto& each : owners) {
    each = makeRef<ZEBWeakValueObject>(nullptr);
    ZEBDeallocHook::attachTo(each, &key, [&, probe = makeRef<Probe>(deaths)] { ++calls; });
  }
  storm(3, [&](int, std::mt19937&) {
    for (const auto& each : owners) ZEBDeallocHook::unattachFrom(each, &key);
  });
  EXPECT_EQ(deaths, 2000);
  owners.clear();
  EXPECT_EQ(calls, 1);
}

}  // namespace zeb::test
