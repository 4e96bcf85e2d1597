#include <ZEBPlatform/Runtime.h>
#include <ZEBUtilities/Bundle.h>

#include "Support/Support.h"

namespace zeb::test {

/// An object of any class.
struct Instance : NSObject {
  explicit Instance(Class* given) : cls(given) {}
  Class* classObject() const override { return cls; }
  Class* const cls;
};
Class* const baseClass =
    registerClass("SwizzleBase", {method("a", [](const Value&) { return "base a"; }),
                                  method("b", [](const Value&) { return "base b"; }),
                                  classMethod("c", [] { return "base c"; }),
                                  classMethod("d", [] { return "base d"; })});

std::string answers(const Value& receiver, std::initializer_list<SEL> selectors) {
  std::string all;
  for (const SEL selector : selectors) all += send<std::string>(receiver, selector) + "; ";
  return all;
}

TEST(ZEBSwizzle, ExchangesOwnAndInheritedMethods) {
  const auto own = method("own", [](const Value&) { return "derived own"; });
  Class* const cls = registerClass("SwizzleDerived", baseClass, {own});
  const Value derived = makeRef<Instance>(cls);
  ZEBSwizzle(cls, "a"_sel, "own"_sel);
  EXPECT_EQ(answers(derived, {"a"_sel, "own"_sel}), "derived own; base a; ");
  ZEBSwizzle(cls, "b"_sel, "unknown"_sel);
  ZEBSwizzle(cls, "unknown"_sel, "b"_sel);
  ZEBSwizzle(nullptr, "a"_sel, "b"_sel);
  EXPECT_EQ(answers(makeRef<Instance>(baseClass), {"a"_sel, "b"_sel}), "base a; base b; ")
      << "the superclass keeps its own";
  EXPECT_FALSE(respondsToSelector(derived, "unknown"_sel));

  for (Class* const each : {cls, baseClass}) {
    ZEBClassSwizzle(each, "c"_sel, "d"_sel);
    EXPECT_EQ(answers(Ref<Class>(each), {"c"_sel, "d"_sel}), "base d; base c; ");
  }
}

TEST(ZEBSwizzleDeathTest, MovesAMethodToAnotherName) {
  Class* const cls = registerClass("SwizzleMoved", baseClass);
  const Value moved = makeRef<Instance>(cls);
  EXPECT_FALSE(ZEBAddMissingMethodImplementation(cls, "new"_sel, "unknown"_sel) ||
               respondsToSelector(moved, "new"_sel));
  EXPECT_TRUE(ZEBAddMissingMethodImplementation(cls, "new"_sel, "b"_sel));
  EXPECT_EQ(answers(moved, {"new"_sel}), "base b; ");
  EXPECT_EQ(answers(makeRef<Instance>(baseClass), {"b"_sel}), "base b; ");
  EXPECT_DEATH(send(moved, "b"_sel),
               "-\\[SwizzleMoved b\\]: unrecognized selector sent to instance 0x");
}

}  // namespace zeb::test
