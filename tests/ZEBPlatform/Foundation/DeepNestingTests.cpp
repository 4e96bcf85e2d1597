#include <ZEBPlatform/Foundation.h>

#include <optional>

#include "NoMemory.h"
#include "Support/Support.h"

namespace zeb::test {

constexpr int depth = 100'000;

TEST(DeepNesting, NothingRecursesOverTheDepthOfValues) {
  using Wrap = Value (*)(const Value& inner);
  const Wrap wraps[] = {
      [](const Value& inner) -> Value { return NSArray{inner}; },
      [](const Value& inner) -> Value { return NSMutableArray{NSMutableDictionary{{"k", inner}}}; },
      [](const Value& inner) -> Value { return NSOrderedSet{inner}; },
      // Members, keys and objects are compared some levels deep only.
      [](const Value& inner) -> Value { return NSSet{inner}; },
      [](const Value& inner) -> Value { return NSDictionary{{inner, 1}}; },
      [](const Value& inner) -> Value { return NSError("d", 1, {{NSUnderlyingErrorKey, inner}}); }};
  for (const Wrap& wrap : wraps) {
    SCOPED_TRACE(&wrap - wraps);
    runOnSmallStack([&] {
      const auto nested = [&] {
        Value value = "innermost";
        for (int level = 0; level < depth; ++level) value = wrap(value);
        return value;
      };
      Value value = nested();
      const Value twin = nested();
      Value detached = value.detachedCopy();
      const bool comparesFully = &wrap - wraps < 3;
      EXPECT_TRUE(value.isEqual(twin) || !comparesFully);
      EXPECT_TRUE(detached.isEqual(twin) || !comparesFully);
      EXPECT_TRUE(value.hash() == twin.hash() && value.copy().hash() == twin.mutableCopy().hash());
      EXPECT_FALSE(comparesFully && value.isEqual(wrap(twin)));
      EXPECT_TRUE(value.description().containsString("…") || !comparesFully);
      value = nullptr;
      EXPECT_FALSE(detached.isNil());
    });
  }
}

TEST(DeepNesting, ShortageOfMemoryIsSurvived) {
  const auto nested = [](int levels) {
    Value value = NSData::dataByJoining(
        std::vector{NSData::dataWithBytes("a"), NSData::data(), NSData::dataWithBytes("b")});
    for (int level = 0; level < levels; ++level) {
      value =
          NSMutableArray{NSDictionary{{"k", NSSet{level}}, {"v", value}}, NSArray{level}, value};
    }
    return value;
  };
  std::optional<Value> value = nested(10);
  const Value twin = nested(10);
  EXPECT_EQ(*value, twin) << "joins the data";
  Value deep = "innermost", deepTwin = "innermost";
  for (Value* one : {&deep, &deepTwin}) {
    for (int level = 0; level < 100; ++level) *one = NSArray{*one};
  }
  const NoMemory noMemory;
  EXPECT_EQ(*value, twin);
  EXPECT_THROW((void)deep.isEqual(deepTwin), std::bad_alloc);
  EXPECT_THROW((void)deep.detachedCopy(), std::bad_alloc);
  value.reset();
}

TEST(DeepNesting, JoinedDataIsReadAndFreedWithoutRecursion) {
  runOnSmallStack([] {
    NSData parts[] = {NSData::data(), NSData::dataWithBytes("x")};
    for (int level = 0; level < depth; ++level) parts[0] = NSData::dataByJoining(parts);
    EXPECT_EQ(parts[0].view(), std::string(depth, 'x'));
  });
}

}  // namespace zeb::test
