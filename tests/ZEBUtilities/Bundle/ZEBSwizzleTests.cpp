#include <ZEBPlatform/Runtime.h>
#include <ZEBUtilities/Bundle.h>

#include "Support/Support.h"

namespace zeb::test {

struct Base : NSObject {
  Class* classObject() const override { return runtimeClass(); }
  static Class* runtimeClass() {
    static Class* const cls =
        registerClass("SwizzleBase", {method("a", [](const Value&) { return "base a"; }),
                                      method("b", [](const Value&) { return "base b"; }),
                                      classMethod("c", [] { return "base c"; }),
                                      classMethod("d", [] { return "base d"; })});
    return cls;
  }
};
struct Derived : Base {
  Class* classObject() const override { return runtimeClass(); }
  static Class* runtimeClass() {
    static Class* const cls =
        registerClass("SwizzleDerived", Base::runtimeClass(),
                      {method("own", [](const Value&) { return "derived own"; }),
                       method("mine", [](const Value&) { return "derived mine"; })});
    return cls;
  }
};

std::string answers(const Value& receiver, std::initializer_list<SEL> selectors) {
  std::string all;
  for (const SEL selector : selectors) all += send<std::string>(receiver, selector) + "; ";
  return all;
}

TEST(ZEBSwizzle, ExchangesOwnAndInheritedMethods) {
  const Value base = makeRef<Base>();
  const Value derived = makeRef<Derived>();
  Class* const cls = Derived::runtimeClass();
  ZEBSwizzle(cls, "own"_sel, "mine"_sel);
  EXPECT_EQ(answers(derived, {"own"_sel, "mine"_sel}), "derived mine; derived own; ");
  ZEBSwizzle(cls, "a"_sel, "own"_sel);
  EXPECT_EQ(answers(derived, {"a"_sel, "own"_sel}), "derived mine; base a; ");
  ZEBSwizzle(cls, "b"_sel, "unknown"_sel);
  ZEBSwizzle(cls, "unknown"_sel, "b"_sel);
  ZEBSwizzle(nullptr, "a"_sel, "b"_sel);
  EXPECT_EQ(answers(base, {"a"_sel, "b"_sel}), "base a; base b; ")
      << "the superclass keeps its own";
  EXPECT_FALSE(respondsToSelector(derived, "unknown"_sel));

  ZEBClassSwizzle(cls, "c"_sel, "d"_sel);
  EXPECT_EQ(answers(Ref<Class>(cls), {"c"_sel, "d"_sel}), "base d; base c; ");
  ZEBClassSwizzle(Base::runtimeClass(), "c"_sel, "d"_sel);
  EXPECT_EQ(answers(Ref<Class>(Base::runtimeClass()), {"c"_sel, "d"_sel}), "base d; base c; ");
}

TEST(ZEBSwizzleDeathTest, MovesAMethodToAnotherName) {
  struct Moved : Base {
    Class* classObject() const override {
      static Class* const cls = registerClass("SwizzleMoved", Derived::runtimeClass());
      return cls;
    }
  };
  const Value moved = makeRef<Moved>();
  Class* const cls = moved.object()->classObject();
  EXPECT_FALSE(ZEBAddMissingMethodImplementation(cls, "new"_sel, "unknown"_sel) ||
               respondsToSelector(moved, "new"_sel));
  EXPECT_TRUE(ZEBAddMissingMethodImplementation(cls, "new"_sel, "b"_sel));
  EXPECT_EQ(answers(moved, {"new"_sel}), "base b; ");
  EXPECT_EQ(answers(makeRef<Base>(), {"b"_sel}), "base b; ");
  EXPECT_DEATH(send(moved, "b"_sel),
               "-\\[SwizzleMoved b\\]: unrecognized selector sent to instance 0x");
}

}  // namespace zeb::test
