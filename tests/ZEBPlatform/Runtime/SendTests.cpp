#include <ZEBPlatform/Foundation/NSNull.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Runtime.h>

#include "Support/Storm.h"
#include "Support/Track.h"

namespace zeb::test {

struct Unregistered : NSObject {};

TEST(Send, SelectorsAreInternedAndLookedUpWhileClassesChange) {
  const auto one = [](const Value&) { return 1; };
  Class* const cls = registerClass("Busy", {method("steady", one)});
  const Value receiver = makeRef<Unregistered>();
  std::vector<SEL> seen[4];
  storm(4, [&](int thread, std::mt19937&) {
    for (std::size_t i = 0; i < 2000; ++i) {
      seen[thread].push_back(sel_registerName("s" + std::to_string(i)));
      if (thread == 0 && i % 8 == 0) {
        class_addMethod(cls, seen[0][i], one);
        class_replaceMethod(cls, "steady"_sel, one);
        exchangeMethods(cls, "steady"_sel, "s0"_sel);
      }
      const Method method = class_getInstanceMethod(cls, "steady"_sel);
      ASSERT_EQ(method_getImplementation(method)(receiver, "steady"_sel, {}), 1);
    }
  });
  for (const auto& mine : seen) EXPECT_EQ(mine, seen[0]);
  EXPECT_STREQ(seen[0][7].name(), "s7");
  EXPECT_TRUE(class_getInstanceMethod(cls, "s0"_sel) && class_getInstanceMethod(cls, "s1992"_sel));
  const char* const noName = nullptr;
  EXPECT_FALSE(SEL() || SEL() == ""_sel || objc_lookUpClass(noName));
  EXPECT_EQ(sel_registerName(noName), ""_sel);
}

TEST(Send, ConvertsArgumentsAndResults) {
  const auto track = send<Ref<Track>>(Track::runtimeClass(), "trackWithTitle:"_sel, "Song");
  ASSERT_TRUE(track);
  EXPECT_EQ(send<NSString>(track, "titleWithPrefix:times:"_sel, "la ", 2), "la la Song");
  EXPECT_EQ(send<std::string>(*track, "titleWithPrefix:times:"_sel, nullptr, "3 times"), "Song");
  send(track, "setPlays:"_sel, 3.9);
  EXPECT_EQ(send<std::uint8_t>(track, "plays"_sel), 3);
  EXPECT_FALSE(send(track, "setNext:"_sel, nullptr) || send<Ref<Track>>(track, "next"_sel));
  EXPECT_TRUE(send<NSString>(Ref<Track>(), "no such thing"_sel, 1, 2).isNil()) << "sent to nil";
  EXPECT_EQ(performSelector(track, "title"_sel, "unwanted", 1), "Song");
  EXPECT_EQ(performSelector(track, "titleWithPrefix:times:"_sel, "missing"), "Song");
  EXPECT_FALSE(respondsToSelector(track, "setCapitals:"_sel)) << "read-only";
  const auto encoding = [](SEL selector) {
    return method_getTypeEncoding(class_getInstanceMethod(Track::runtimeClass(), selector));
  };
  EXPECT_STREQ(encoding("setPlays:"_sel), "v@:q");
  EXPECT_STREQ(encoding("isBefore:"_sel), "B@:@");
}

TEST(Send, ConvertsOptionalsAndContainersBothWays) {
  using Counts = std::map<std::string, std::optional<int>>;
  Class* const cls = registerClass(
      "Shelf", {classMethod("names:", [](const std::vector<std::string>& given) { return given; }),
                classMethod("counts:", [](const Counts& given) { return given; }),
                classMethod("width:", [](std::optional<double> given) { return given; })});
  const NSArray names{"one", "two"}, empty = NSArray::array();
  const NSDictionary counts{{"a", 1}, {"b", NSNull::null()}};
  const std::tuple<SEL, Value, Value, Value> cases[] = {
      {"names:"_sel, names, names, NSArray{"one", 2}},
      {"names:"_sel, nullptr, empty, "no array"},
      {"counts:"_sel, counts, counts, NSDictionary{{"a", "1"}, {"b", empty}}},
      {"counts:"_sel, nullptr, NSDictionary::dictionary(), empty},
      {"width:"_sel, 2.5, 2.5, empty},
      {"width:"_sel, nullptr, nullptr, empty},
  };
  for (const auto& [selector, value, converted, wrong] : cases) {
    EXPECT_EQ(send(cls, selector, value), converted) << selector.name();
    EXPECT_EQ(raisedName([&] { send(cls, selector, wrong); }), NSInvalidArgumentException) << wrong;
  }
}

TEST(Send, ReportsWhatDoesNotFit) {
  const auto track = Track::trackWithTitle("Song");
  const auto other = makeRef<Unregistered>();
  Class* const cls = Track::runtimeClass();
  const std::pair<std::function<void()>, const char*> cases[] = {
      {[&] { send(track, "setPlays:"_sel, NSArray{1}); },
       "-[Track setPlays:]: argument 1 is NSArray, wanted is long"},
      {[&] { send(track, "setNext:"_sel, other); },
       "-[Track setNext:]: argument 1 is Unregistered, wanted is zeb::Ref<zeb::test::Track>"},
      {[&] { send(track, "isBefore:"_sel, nullptr); },
       "-[Track isBefore:]: argument 1 is nil, wanted is zeb::test::Track"},
      {[&] { send(track, "title"_sel, 1); }, "-[Track title]: given are 1 arguments, wanted are 0"},
      {[&] { send(cls, "trackWithTitle:"_sel); },
       "+[Track trackWithTitle:]: given are 0 arguments, wanted are 1"},
      {[&] { send<int>(track, "setNext:"_sel, nullptr), send<NSArray>(track, "title"_sel); },
       "-[Track title]: the result is NSString, wanted is zeb::NSArray"},
      {[&] {
         const Method title = class_getInstanceMethod(cls, "title"_sel);
         method_getImplementation(title)(other, "title"_sel, {});
       },
       "-[Unregistered title]: the receiver is Unregistered, wanted is zeb::test::Track"},
      {[&] { class_addMethod(cls, "a:b:"_sel, &Track::title); },
       "the implementation for a:b: takes another number of arguments"},
      {[&] { registerClass("Track"); }, "there is a class Track already"},
      {[&] { extendClass(cls, {method(NSString(), &Track::title)}); },
       "a method or property needs a name"},
      {[&] { extendClass(cls, {method("a", static_cast<int (Track::*)()>(nullptr))}); },
       "no implementation for a"},
      {[&] { extendClass(cls, {classMethod("b", static_cast<int (*)()>(nullptr))}); },
       "no implementation for b"},
  };
  for (const auto& [call, reason] : cases)
    EXPECT_EQ(raisedText(call), std::string("NSInvalidArgumentException: ") + reason);
  EXPECT_EQ(raisedName([] { handleFailureInMethod(SEL(), Value(), "file", 1, nullptr); }),
            "NSInternalInconsistencyException");
}

TEST(SendDeathTest, UnknownSelectorsStopTheProcess) {
  const auto track = makeRef<Track>();
  EXPECT_DEATH(send(track, "init"_sel), "^-\\[Track init\\]: unrecognized .* to instance 0x");
  EXPECT_DEATH(send(makeRef<Unregistered>(), "init"_sel), "-\\[Unregistered init\\]: unrecognized");
  EXPECT_DEATH(send(Track::runtimeClass(), "new"_sel),
               "^\\+\\[Track new\\]: unrecognized selector sent to class 0x");
  EXPECT_DEATH(send("text", "count"_sel), "-\\[NSString count\\]: unrecognized");
}

TEST(Send, KnowsTheClassesOfValues) {
  const std::tuple<Value, const char*, SEL, Value> cases[] = {
      {"héllo", "NSString", "length"_sel, 5},
      {NSMutableString(NSString("5 x")), "NSMutableString", "intValue"_sel, 5},
      {true, "NSNumber", "stringValue"_sel, "1"},
      {2.5, "NSNumber", "integerValue"_sel, 2},
      {NSArray{1, 2}, "NSArray", "lastObject"_sel, 2},
      {NSMutableArray{1}, "NSMutableArray", "count"_sel, 1},
      {NSDictionary{{"a", 1}}, "NSDictionary", "allKeys"_sel, NSArray{"a"}},
      {makeRef<Unregistered>(), "NSObject", "superclass"_sel, nullptr},
      {Ref<Class>(Track::runtimeClass()), "Track", "description"_sel, "Track"},
  };
  for (const auto& [value, name, selector, answer] : cases) {
    EXPECT_STREQ(object_getClass(value)->name(), name);
    EXPECT_EQ(send(value, selector), answer) << name;
  }
  EXPECT_FALSE(object_getClass(nullptr));
  NSMutableArray array;
  send(array, "insertObject:atIndex:"_sel, "shared", 0);
  EXPECT_EQ(array.firstObject(), "shared");
  EXPECT_EQ(send(array, "class"_sel), Ref<Class>(objc_lookUpClass("NSMutableArray")));
  Class* const superclass = objc_lookUpClass("NSArray");
  EXPECT_TRUE(send<bool>(array, "isKindOfClass:"_sel, superclass) &&
              !send<bool>(array, "isMemberOfClass:"_sel, superclass));
}

TEST(Send, MethodsCanBeAddedReplacedAndExchanged) {
  const auto track = Track::trackWithTitle("Song");
  Class* const cls = Track::runtimeClass();
  registerClass("LongTrack", cls, {method("title", [](const Track&) { return "long"; })});
  struct LongTrack : Track {
    Class* classObject() const override { return objc_lookUpClass("LongTrack"); }
  };
  const auto longTrack = makeRef<LongTrack>();
  EXPECT_TRUE(send<bool>(objc_lookUpClass("LongTrack"), "isSubclassOfClass:"_sel, cls));
  EXPECT_EQ(send(longTrack, "title"_sel), "long");
  EXPECT_FALSE(class_addMethod(cls, "title"_sel, [](const Value&) { return 0; }));
  const auto shout = [](const Track& self) { return self.title().stringByAppendingString("!"); };
  extendClass(cls, {method("shout", shout)});
  longTrack->setTitle("Suite");
  EXPECT_EQ(send(longTrack, "shout"_sel), "Suite!") << "a category reaches subclasses";
  const auto exchange = [cls] { exchangeMethods(cls, "title"_sel, "shout"_sel); };
  exchange();
  EXPECT_EQ(send(track, "title"_sel), "Song!");
  EXPECT_EQ(send(track, "shout"_sel), "Song");
  const auto untyped = [](const Value& self, SEL selector, std::span<const Value>) {
    return Value(detail::methodName(self, selector));
  };
  const IMP old = class_replaceMethod(cls, "title"_sel, untyped);
  EXPECT_EQ(send(track, "title"_sel), "-[Track title]");
  class_replaceMethod(cls, "title"_sel, old);
  exchange();
  EXPECT_EQ(send(track, "title"_sel), "Song");
}

}  // namespace zeb::test
