#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Runtime/NSAssertionHandler.h>
#include <ZEBPlatform/Runtime/Send.h>

#include <thread>

#include "Support/Support.h"
#include "Support/Track.h"

namespace zeb::test {

struct LongTrack : Track {
  static Class* runtimeClass() {
    static Class* const cls =
        registerClass("LongTrack", Track::runtimeClass(),
                      {method("title", [](const LongTrack&) { return NSString("long"); })});
    return cls;
  }
  Class* classObject() const override { return runtimeClass(); }
};
struct Unregistered : NSObject {};

std::string reason(const std::function<void()>& call) {
  try {
    call();
  } catch (const NSException& exception) {
    EXPECT_EQ(exception.name(), NSInvalidArgumentException);
    return exception.reason().utf8();
  }
  return "";
}

TEST(Send, SelectorsAreInternedAcrossThreads) {
  std::vector<std::vector<SEL>> seen(4);
  std::vector<std::thread> threads;
  for (auto& mine : seen) {
    threads.emplace_back([&mine] {
      for (int i = 0; i < 2000; ++i)
        mine.push_back(sel_registerName("s" + std::to_string(i) + ":"));
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const auto& mine : seen) EXPECT_EQ(mine, seen[0]);
  EXPECT_EQ(seen[0][7].argumentCount(), 1u);
  EXPECT_STREQ("setTitle:"_sel.name(), "setTitle:");
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
  EXPECT_TRUE(send(track, "setNext:"_sel, nullptr).isNil());
  EXPECT_FALSE(send<Ref<Track>>(track, "next"_sel));
  const auto unheard = send<NSString>(Ref<Track>(), "no such thing"_sel, 1, 2);
  EXPECT_TRUE(unheard.isNil()) << "sent to nil";
  EXPECT_EQ(send<int>(Value(), "length"_sel), 0);
  EXPECT_EQ(performSelector(track, "title"_sel, "unwanted", 1), "Song");
  EXPECT_EQ(performSelector(track, "titleWithPrefix:times:"_sel, "missing"), "Song");
  EXPECT_TRUE(respondsToSelector(track, "setNext:"_sel) &&
              !respondsToSelector(track, "setCapitals:"_sel));
  EXPECT_STREQ(
      method_getTypeEncoding(class_getInstanceMethod(Track::runtimeClass(), "setPlays:"_sel)),
      "v@:q");
  EXPECT_STREQ(
      method_getTypeEncoding(class_getInstanceMethod(Track::runtimeClass(), "isBefore:"_sel)),
      "B@:@");
}

TEST(Send, ReportsWhatDoesNotFit) {
  const auto track = Track::trackWithTitle("Song");
  const auto other = makeRef<Unregistered>();
  const struct {
    std::function<void()> call;
    const char* reason;
  } cases[] = {
      {[&] { send(track, "setTitle:"_sel, 5); },
       "-[Track setTitle:]: argument 1 is NSNumber, wanted is zeb::NSString"},
      {[&] { send(track, "setPlays:"_sel, NSArray{1}); },
       "-[Track setPlays:]: argument 1 is NSArray, wanted is long"},
      {[&] { send(track, "setNext:"_sel, other); },
       "-[Track setNext:]: argument 1 is Unregistered, wanted is zeb::Ref<zeb::test::Track>"},
      {[&] { send(track, "isBefore:"_sel, nullptr); },
       "-[Track isBefore:]: argument 1 is nil, wanted is zeb::test::Track"},
      {[&] { send(track, "title"_sel, 1); }, "-[Track title]: given are 1 arguments, wanted are 0"},
      {[&] { send(Track::runtimeClass(), "trackWithTitle:"_sel); },
       "+[Track trackWithTitle:]: given are 0 arguments, wanted are 1"},
      {[&] { send<int>(track, "setNext:"_sel, nullptr), send<NSArray>(track, "title"_sel); },
       "-[Track title]: the result is NSString, wanted is zeb::NSArray"},
      {[&] {
         method_getImplementation(class_getInstanceMethod(Track::runtimeClass(), "title"_sel))(
             other, "title"_sel, {});
       },
       "-[Unregistered title]: the receiver is Unregistered, wanted is zeb::test::Track"},
      {[&] { class_addMethod(Track::runtimeClass(), "a:b:"_sel, &Track::title); },
       "the implementation for a:b: takes another number of arguments"},
      {[&] { registerClass("Track"); }, "there is a class Track already"},
      {[&] { extendClass(Track::runtimeClass(), {method(NSString(), &Track::title)}); },
       "a method or property needs a name"},
      {[&] {
         extendClass(Track::runtimeClass(), {method("a", static_cast<int (Track::*)()>(nullptr))});
       },
       "no implementation for a"},
      {[&] {
         extendClass(Track::runtimeClass(), {classMethod("a", static_cast<int (*)()>(nullptr))});
       },
       "no implementation for a"},
  };
  for (const auto& one : cases) EXPECT_EQ(reason(one.call), one.reason);
  EXPECT_EQ(raisedName([] { handleFailureInMethod(SEL(), Value(), "file", 1, nullptr); }),
            "NSInternalInconsistencyException");
}

TEST(SendDeathTest, UnknownSelectorsStopTheProcess) {
  const auto track = makeRef<Track>();
  EXPECT_DEATH(send(track, "init"_sel),
               "^-\\[Track init\\]: unrecognized selector sent to instance 0x");
  EXPECT_DEATH(send(makeRef<Unregistered>(), "init"_sel), "-\\[Unregistered init\\]: unrecognized");
  EXPECT_DEATH(send(Track::runtimeClass(), "new"_sel),
               "^\\+\\[Track new\\]: unrecognized selector sent to class 0x");
  EXPECT_DEATH(send("text", "count"_sel), "-\\[NSString count\\]: unrecognized");
}

TEST(Send, KnowsTheClassesOfValues) {
  const struct {
    Value value;
    const char* name;
    const char* selector;
    Value answer;
  } cases[] = {
      {"héllo", "NSString", "length", 5},
      {NSMutableString(NSString("5 x")), "NSMutableString", "intValue", 5},
      {true, "NSNumber", "stringValue", "1"},
      {2.5, "NSNumber", "integerValue", 2},
      {NSArray{1, 2}, "NSArray", "lastObject", 2},
      {NSMutableArray{1}, "NSMutableArray", "count", 1},
      {NSDictionary{{"a", 1}}, "NSDictionary", "allKeys", NSArray{"a"}},
      {makeRef<Unregistered>(), "NSObject", "superclass", nullptr},
      {Ref<Class>(Track::runtimeClass()), "Track", "description", "Track"},
  };
  for (const auto& one : cases) {
    EXPECT_STREQ(object_getClass(one.value)->name(), one.name);
    EXPECT_EQ(send(one.value, sel_registerName(one.selector)), one.answer) << one.name;
  }
  NSMutableArray array;
  send(array, "insertObject:atIndex:"_sel, "shared", 0);
  EXPECT_EQ(array.firstObject(), "shared");
  EXPECT_FALSE(object_getClass(nullptr));
  EXPECT_EQ(objc_lookUpClass("NSMutableArray"), object_getClass(array));
  EXPECT_EQ(send(array, "class"_sel), send(array.mutableCopy(), "class"_sel));
  EXPECT_TRUE(send<bool>(array, "isKindOfClass:"_sel, objc_lookUpClass("NSArray")));
  EXPECT_FALSE(send<bool>(array, "isMemberOfClass:"_sel, objc_lookUpClass("NSArray")));
  EXPECT_TRUE(
      send<bool>(LongTrack::runtimeClass(), "isSubclassOfClass:"_sel, Track::runtimeClass()));
}

TEST(Send, MethodsCanBeAddedReplacedAndExchanged) {
  const auto track = Track::trackWithTitle("Song");
  const auto longTrack = makeRef<LongTrack>();
  Class* const cls = Track::runtimeClass();
  EXPECT_EQ(send(longTrack, "title"_sel), "long");
  EXPECT_FALSE(class_addMethod(cls, "title"_sel, [](const Value&) { return 0; }));
  extendClass(cls, {method("shout", [](const Track& self) {
                return self.title().stringByAppendingString("!");
              })});
  longTrack->setTitle("Suite");
  EXPECT_EQ(send(longTrack, "shout"_sel), "Suite!") << "a category reaches subclasses";
  method_exchangeImplementations(class_getInstanceMethod(cls, "title"_sel),
                                 class_getInstanceMethod(cls, "shout"_sel));
  EXPECT_EQ(send(track, "title"_sel), "Song!");
  EXPECT_EQ(send(track, "shout"_sel), "Song");
  const IMP old = class_replaceMethod(cls, "title"_sel,
                                      [](const Value& self, SEL selector, std::span<const Value>) {
                                        return Value(detail::methodName(self, selector));
                                      });
  EXPECT_EQ(send(track, "title"_sel), "-[Track title]");
  class_replaceMethod(cls, "title"_sel, old);
  method_exchangeImplementations(class_getInstanceMethod(cls, "title"_sel),
                                 class_getInstanceMethod(cls, "shout"_sel));
  EXPECT_EQ(send(track, "title"_sel), "Song");
}

TEST(Send, LooksUpWhileClassesChange) {
  Class* const cls = registerClass("Busy", {method("steady", [](const Value&) { return 1; })});
  std::atomic<bool> done = false;
  std::vector<std::thread> readers;
  const Value receiver = makeRef<Unregistered>();
  for (int i = 0; i < 3; ++i) {
    readers.emplace_back([&] {
      while (!done) {
        const Method method = class_getInstanceMethod(cls, "steady"_sel);
        ASSERT_EQ(method_getImplementation(method)(receiver, "steady"_sel, {}), 1);
      }
    });
  }
  for (int i = 0; i < 300; ++i) {
    class_addMethod(cls, sel_registerName("m" + std::to_string(i)), [](const Value&) { return 1; });
    class_replaceMethod(cls, "steady"_sel, [](const Value&) { return 1; });
    method_exchangeImplementations(class_getInstanceMethod(cls, "steady"_sel),
                                   class_getInstanceMethod(cls, "m0"_sel));
  }
  done = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_TRUE(class_getInstanceMethod(cls, "m0"_sel) && class_getInstanceMethod(cls, "m299"_sel));
}

}  // namespace zeb::test
