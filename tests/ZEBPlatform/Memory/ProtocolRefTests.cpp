#include <ZEBPlatform/Memory/ProtocolRef.h>

#include "Support/Support.h"

namespace zeb::test {

template <int number>
struct Protocol {
  virtual int own() const { return number; }

 protected:
  ~Protocol() = default;
};
using First = Protocol<1>;
using Second = Protocol<2>;
struct Both final : Probe, First, Second {
  using Probe::Probe;
};

static_assert(!std::convertible_to<Ref<NSObject>, ProtocolRef<First>>);

TEST(ProtocolRef, HoldsAnObjectByOneOfItsProtocols) {
  std::atomic<int> deaths = 0;
  Ref<Both> object = makeRef<Both>(deaths);
  const WeakProtocolRef<Second> weak(object);
  ProtocolRef<First> first = object;
  ProtocolRef<Second> second = weak.lock();
  EXPECT_TRUE(first->own() == 1 && second->own() == 2);
  EXPECT_TRUE(second == object && second == weak.lock() && second.object() == object);
  EXPECT_TRUE(first && first != nullptr && first != makeRef<Both>(deaths));
  object = nullptr;
  first = nullptr;
  EXPECT_EQ(deaths, 1) << "the one it was compared with";
  EXPECT_TRUE(weak.isAlive());
  second = ProtocolRef<Second>();
  EXPECT_EQ(deaths, 2);
  EXPECT_TRUE(!first && first == nullptr && !weak.lock() && !weak.isAlive());
  EXPECT_FALSE(WeakProtocolRef<First>(nullptr).lock() || ProtocolRef<First>(Ref<Both>()));
}

}  // namespace zeb::test
