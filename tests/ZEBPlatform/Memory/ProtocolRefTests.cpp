#include <ZEBPlatform/Memory/ProtocolRef.h>

#include "Support/Support.h"

namespace zeb::test {

struct Named {
  virtual std::string name() const = 0;

 protected:
  ~Named() = default;
};
struct Numbered {
  virtual int number() const = 0;

 protected:
  ~Numbered() = default;
};
struct Both : Probe, Named, Numbered {
  using Probe::Probe;
  std::string name() const override { return "both"; }
  int number() const override { return 2; }
};

static_assert(!std::convertible_to<Ref<NSObject>, ProtocolRef<Named>>);

TEST(ProtocolRef, HoldsAnObjectByOneOfItsProtocols) {
  std::atomic<int> deaths = 0;
  Ref<Both> object = makeRef<Both>(deaths);
  const WeakProtocolRef<Numbered> weak(object);
  ProtocolRef<Named> named = object;
  ProtocolRef<Numbered> numbered = weak.lock();
  EXPECT_TRUE(named->name() == "both" && numbered->number() == 2);
  EXPECT_TRUE(numbered == object && numbered == weak.lock() && numbered.object() == object);
  EXPECT_TRUE(named && named != nullptr && named != makeRef<Both>(deaths));
  object = nullptr;
  named = nullptr;
  EXPECT_EQ(deaths, 1) << "the one it was compared with";
  EXPECT_TRUE(weak.isAlive());
  numbered = ProtocolRef<Numbered>();
  EXPECT_EQ(deaths, 2);
  EXPECT_TRUE(!named && named == nullptr && !weak.lock() && !weak.isAlive());
  EXPECT_FALSE(WeakProtocolRef<Named>(nullptr).lock() || ProtocolRef<Named>(Ref<Both>()));
}

}  // namespace zeb::test
