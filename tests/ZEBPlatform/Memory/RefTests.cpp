#include <ZEBPlatform/Memory.h>

#include "Support/Storm.h"

namespace zeb::test {

struct LoggedBase {
  void retain() { log += '+'; }
  void release() { log += '-'; }
  std::string log;
};
struct Logged : LoggedBase {};

TEST(Ref, RetainsAndReleasesExactly) {
  Logged object;
  {
    Ref<Logged> ref(&object);
    Ref<Logged> copy(ref), moved(std::move(copy));
    Ref<LoggedBase> base(std::move(moved));
    EXPECT_EQ(object.log, "++");
    EXPECT_TRUE(!copy && !moved && base == ref);
    base = ref;
    EXPECT_EQ(object.log, "+++-");
    const Ref<Logged>& same = ref;
    ref = same;
    base = nullptr;
    EXPECT_EQ(object.log, "+++-+--");
    EXPECT_TRUE(ref.leak() == &object && ref == nullptr);
  }
  Ref<Logged>::adopt(&object);  // what was leaked
  EXPECT_EQ(object.log, "+++-+---");
}

TEST(NSObject, IsDescribedByItsClass) {
  struct Plain : NSObject {};
  const auto object = makeRef<Plain>();
  EXPECT_TRUE(object->className().ends_with("Plain")) << object->className();
  EXPECT_TRUE(object->description().starts_with("<" + object->className() + ": 0x"));
}

/// Counts the faults of its memory: a wrong alignment, and use by another object.
template <std::size_t words>
struct alignas(words == 16 ? 64 : 8) Filled final : NSObject {
  explicit Filled(std::atomic<int>& sharedFaults) : faults(sharedFaults) {
    static std::atomic<std::uint64_t> objects = 0;
    std::ranges::fill(content, ++objects);
    faults += reinterpret_cast<std::uintptr_t>(this) % alignof(Filled) != 0;
  }
  ~Filled() override { faults += std::ranges::count(content, content[0]) != words; }
  std::atomic<int>& faults;
  std::uint64_t content[words];
};

TEST(NSObject, HasItsMemoryToItselfOnAllThreads) {
  std::atomic<int> faults = 0;
  std::array<std::atomic<NSObject*>, 500> slots{};
  const auto made = [&](std::uint64_t kind) -> Ref<NSObject> {
    if (kind % 5 == 0) return makeRef<Filled<1>>(faults);
    if (kind % 5 == 1) return makeRef<Filled<9>>(faults);
    if (kind % 5 == 2) return makeRef<Filled<11>>(faults);
    if (kind % 5 == 3) return makeRef<Filled<12>>(faults);
    return makeRef<Filled<16>>(faults);
  };
  storm(4, [&](int, std::mt19937& random) {
    thread_local Ref<NSObject> released;  // after all that the thread uses from here on
    released = nullptr;
    for (int count = 0; count < 20'000; ++count)
      Ref<NSObject>::adopt(slots[random() % slots.size()].exchange(made(random()).leak()));
    released = made(0);
  });
  for (std::atomic<NSObject*>& slot : slots) Ref<NSObject>::adopt(slot.exchange(nullptr));
  EXPECT_EQ(faults, 0);
}

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

TEST(Block, CopiesShareOneClosureUntilTheLast) {
  std::atomic<int> deaths = 0;
  const Block<int()> none = nullptr;
  EXPECT_TRUE(!none && none == Block<int()>());
  Block<int()> block = [probe = makeRef<Probe>(deaths), calls = 0]() mutable { return ++calls; };
  Block<int()> copy = block;
  EXPECT_TRUE(block == copy && !(block == none) && block() == 1);
  block = nullptr;
  EXPECT_TRUE(copy() == 2 && deaths == 0);
  copy = nullptr;
  EXPECT_EQ(deaths, 1);
}

static int twice(int number) { return 2 * number; }

TEST(FunctionView, CallsWhateverItViews) {
  auto counting = [sum = 0](int number) mutable { return sum += number; };
  const auto constant = [](int number) { return number + 1; };
  const Block<int(int)> block = twice;
  const auto call = [](FunctionView<int(int)> view) { return view ? view(10) : -1; };
  EXPECT_EQ(call(twice) + call(&twice) + call(block) + call(constant), 71);
  EXPECT_EQ(call(counting) + call(counting), 30) << "the closure itself is called, not a copy";
  EXPECT_EQ(call(nullptr), -1);
}

TEST(NilCallDeathTest, SaysWhatHappened) {
  const Block<int(int)> block = nullptr;
  EXPECT_DEATH(block(1), "^A nil block was called");
  const FunctionView<int(int)> view = block;
  EXPECT_DEATH(view(1), "^A nil block was called");
}

}  // namespace zeb::test
