#include <ZEBPlatform/Foundation/NSNull.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Runtime.h>
#include <malloc.h>

#include "Support/Storm.h"
#include "Support/Track.h"

namespace zeb::test {

TEST(KeyValueCoding, ReachesPropertiesMethodsAndEntries) {
  const auto track = Track::trackWithTitle("One");
  const auto next = Track::trackWithTitle("Two");
  setValueForKey(track, next, "next");
  setValueForKeyPath(track, 7, "next.plays");
  NSMutableDictionary shelf{{"first", track}};
  setValueForKeyPath(shelf, "Uno", "first.title");
  setValueForKey(shelf, "gone", "extra");
  setValueForKey(shelf, nullptr, "extra");
  setValueForKey(Value(), 1, "anything");

  const std::tuple<Value, const char*, Value> cases[] = {
      {track, "next.plays", 7},
      {track, "next.next.title", nullptr},
      {track, "title.length", 3},
      {track, "next.description.length", Value(next).description().length()},
      {shelf, "first.next.title", "Two"},
      {shelf, "extra", nullptr},
      {nullptr, "anything.at all", nullptr},
  };
  for (const auto& [receiver, path, value] : cases)
    EXPECT_EQ(valueForKeyPath(receiver, path), value) << path;
  EXPECT_EQ(send(track, "valueForKeyPath:"_sel, "next.title"), "Two");
}

TEST(KeyValueCoding, RefusesWhatIsNotThere) {
  const auto track = Track::trackWithTitle("One");
  const std::function<void()> cases[] = {
      [&] { valueForKey(track, "volume"); },
      [&] { valueForKey(track, "setTitle:"); },
      [&] { valueForKeyPath(track, "title.volume"); },
      [&] { setValueForKey(track, true, "capitals"); },
      [&] { setValueForKey(track, 1, "volume"); },
      [&] { setValueForKey(NSDictionary{{"a", 1}}, 1, "a"); },
  };
  for (const auto& call : cases) EXPECT_EQ(raisedName(call), "NSUnknownKeyException");
}

constexpr auto New = NSKeyValueObservingOptionNew, Old = NSKeyValueObservingOptionOld,
               Initial = NSKeyValueObservingOptionInitial, Prior = NSKeyValueObservingOptionPrior;

/// Writes "path old>new" into a log for each change, and then does something.
struct Observer : NSObject, NSKeyValueObserver {
  explicit Observer(std::string& target) : log(target) {}
  void observeValueForKeyPath(const NSString& keyPath, const Value& object,
                              const KeyValueChange& change, void* context) override {
    EXPECT_TRUE(object.object<Track>());
    EXPECT_EQ(change.kind(), NSKeyValueChangeSetting);
    const NSDictionary& dictionary = change.dictionary();
    EXPECT_EQ(dictionary["notificationIsPrior"].boolValue(), change.isPrior());
    log += (change.isPrior() ? "(" : "") + keyPath.utf8();
    if (context) log += std::string("#") + static_cast<const char*>(context);
    if (const Value old = dictionary["old"]) log += " " + old.description().utf8() + ">";
    if (const Value fresh = dictionary["new"]) log += fresh.description().utf8();
    log += "\n";
    if (then) std::exchange(then, nullptr)();
  }
  std::string& log;
  std::function<void()> then;
};

struct KeyValueObserving : testing::Test {
  std::string taken() { return std::exchange(log, ""); }
  std::string log;
  Ref<Track> track = Track::trackWithTitle("One");
  Ref<Observer> observer = makeRef<Observer>(log);
  Ref<Observer> other = makeRef<Observer>(log);
};

TEST_F(KeyValueObserving, TellsWhatTheOptionsAskFor) {
  const std::pair<NSKeyValueObservingOptions, const char*> cases[] = {
      {0, "title\n"},
      {New, "titleTwo\n"},
      {Old, "title One>\n"},
      {Initial, "title\ntitle\n"},
      {Initial | New, "titleOne\ntitleTwo\n"},
      {Prior | New, "(title\ntitleTwo\n"},
      {Prior | Old | New, "(title One>\ntitle One>Two\n"},
  };
  for (const auto& [options, told] : cases) {
    track->setTitle("One");
    addObserver(track, observer, "title", options);
    send(track, "setTitle:"_sel, "Two");
    removeObserver(track, observer, "title");
    send(track, "setTitle:"_sel, "Three");
    EXPECT_EQ(taken(), told);
  }
  addObserver(track, observer, "title", New | Old);
  setValueForKey(track, nullptr, "title");
  EXPECT_EQ(taken(), "title Three><null>\n") << "nil is in the dictionary as null";
}

TEST_F(KeyValueObserving, HearsEachWayOfChangingOnce) {
  addObserver(track, observer, "plays", New);
  addObserver(track, observer, "rank", New);
  addObserver(track, observer, "no property", 0);
  send(track, "setPlays:"_sel, 1);
  setValueForKey(track, 3, "plays");
  send(track, "setRank:"_sel, 4);
  track->setRank(5);
  EXPECT_EQ(taken(), "plays1\nplays3\nrank4\nrank5\n") << "manual: told by the C++ setter";
  for (const char* key : {"plays", "no property"}) willChangeValueForKey(track, key);
  for (const char* key : {"plays", "no property", "plays"}) didChangeValueForKey(track, key);
  EXPECT_EQ(taken(), "plays3\nno property\n") << "a second did without a will";

  // Swizzled or overridden setters still tell, and once.
  Class* const cls = Track::runtimeClass();
  const SEL loudly = "loudly_setPlays:"_sel;
  extendClass(cls, {method(loudly.name(),
                           [=](Track& self, int plays) { send(self, loudly, plays * 100); })});
  exchangeMethods(cls, "setPlays:"_sel, loudly);
  send(track, "setPlays:"_sel, 6);
  exchangeMethods(cls, "setPlays:"_sel, loudly);
  const IMP getter = class_replaceMethod(cls, "plays"_sel, [](const Track&) { return -1; });
  send(track, "setPlays:"_sel, 7);
  class_replaceMethod(cls, "plays"_sel, getter);
  EXPECT_EQ(taken(), "plays600\nplays-1\n");
}

TEST_F(KeyValueObserving, SeesMethodsThatASubclassGetsLater) {
  Class* const cls = registerClass("Suite", Track::runtimeClass());
  struct Suite : Track {
    Class* classObject() const override { return objc_lookUpClass("Suite"); }
  };
  track = makeRef<Suite>();
  addObserver(track, observer, "plays", New);
  class_addMethod(cls, "setPlays:"_sel, [](Track& self, int plays) { self.setRank(plays); });
  class_addMethod(cls, "plays"_sel, [](const Track&) { return 8; });
  send(track, "setPlays:"_sel, 1);
  EXPECT_EQ(taken(), "plays8\n");
}

TEST_F(KeyValueObserving, FollowsKeyPaths) {
  const auto second = Track::trackWithTitle("Two");
  const auto third = Track::trackWithTitle("Three");
  addObserver(track, observer, "next.title", New | Old);
  setValueForKey(track, second, "next");
  setValueForKey(second, "Deux", "title");
  setValueForKey(track, third, "next");
  setValueForKey(second, "unheard", "title");
  setValueForKey(track, nullptr, "next");
  setValueForKey(third, "unheard", "title");
  setValueForKey(track, track, "next");
  setValueForKey(track, "Self", "title");
  EXPECT_EQ(taken(),
            "next.title <null>>Two\nnext.title Two>Deux\nnext.title Deux>Three\n"
            "next.title Three><null>\nnext.title <null>>One\nnext.title One>Self\n");
  removeObserver(track, observer, "next.title");
  setValueForKey(track, "unheard", "title");

  addObserver(track, observer, "next.next.title", New);
  setValueForKey(track, second, "next");
  setValueForKey(second, third, "next");
  EXPECT_EQ(taken(), "next.next.title<null>\nnext.next.titleunheard\n");
  setValueForKey(third, "Tres", "title");
  track = nullptr;
  setValueForKey(third, "unheard", "title");
  setValueForKey(second, nullptr, "next");
  EXPECT_EQ(taken(), "next.next.titleTres\n") << "until the first object dies";
}

TEST_F(KeyValueObserving, RefusesWhatCannotBe) {
  char one[] = "1";
  char two[] = "2";
  addObserver(track, observer, "title", New, one);
  addObserver(track, observer, "title", New, two);
  addObserver(track, nullptr, "title", New);
  addObserver(nullptr, observer, "title", New);
  removeObserver(nullptr, observer, "title");
  removeObserver(track, observer, "title", one);
  send(track, "setTitle:"_sel, "Two");
  EXPECT_EQ(taken(), "title#2Two\n");
  removeObserver(track, observer, "title");
  for (const auto& path : {"title", "rank", "next.title"})
    EXPECT_EQ(raisedName([&] { removeObserver(track, observer, path); }), NSRangeException);
  addObserver(track, observer, "next.volume", 0);  // there is no object that could be asked
}

TEST_F(KeyValueObserving, CallbacksMayChangeEverything) {
  addObserver(track, observer, "title", New);
  addObserver(track, other, "title", New);
  observer->then = [&] {
    removeObserver(track, other, "title");
    addObserver(track, other, "plays", New);
    send(track, "setPlays:"_sel, 1);
    addObserver(track, other, "title", New);
  };
  send(track, "setTitle:"_sel, "Two");
  EXPECT_EQ(taken(), "titleTwo\nplays1\n") << "removed before, added after it began";
  observer->then = [&] { send(track, "setTitle:"_sel, "inner"); };
  send(track, "setTitle:"_sel, "outer");
  EXPECT_EQ(taken(), "titleouter\ntitleinner\ntitleinner\ntitleouter\n");

  observer->then = [&] { other = nullptr; };
  send(track, "setTitle:"_sel, "Three");
  EXPECT_EQ(taken(), "titleThree\n") << "a dead observer";
  addObserver(track, observer, "rank", 0);
  for (const int way : {0, 1}) {
    observer->then = [] { throw 5; };
    EXPECT_THROW(way == 0 ? (void)send(track, "setTitle:"_sel, "Four") : track->setRank(1), int);
  }

  other = makeRef<Observer>(log);
  addObserver(track, other, "title", Prior);
  taken();
  observer->then = [&] { track = nullptr; };
  const WeakRef<Track> weak(track);
  willChangeValueForKey(track, "title");
  send(*track, "setTitle:"_sel, "Five");
  EXPECT_EQ(taken(), "(title\n(title\ntitleFive\ntitle\n")
      << "the object dies after the last callback";
  EXPECT_FALSE(weak.lock());
}

TEST_F(KeyValueObserving, ObjectLivesUntilItsChangeEnds) {
  std::optional<KeyValueChangeScope> change;
  const auto begin = [&](Track& self, bool) { change.emplace(self, StringKey("title")); };
  extendClass(Track::runtimeClass(), {method("setChanging:", begin)});
  for (const Ref<Observer>& one : {observer, other}) addObserver(track, one, "title", New);
  observer->then = [&] { track = nullptr; };
  setValueForKey(track, "Two", "title");
  EXPECT_EQ(taken(), "titleTwo\ntitleTwo\n");

  track = Track::trackWithTitle("One");
  addObserver(track, observer, "title", New);
  setValueForKey(track, true, "changing");
  track = nullptr;
  change.reset();
  EXPECT_EQ(taken(), "titleOne\n") << "the change outlives the call that held the object";
}

TEST_F(KeyValueObserving, ManyObserversGoInAnyOrder) {
  setValueForKey(track, Track::trackWithTitle("Next"), "next");
  std::vector<Ref<Observer>> observers(40'000);
  for (Ref<Observer>& one : observers) one = makeRef<Observer>(log);
  for (const char* path : {"title", "next.title"}) {
    for (const Ref<Observer>& one : observers) addObserver(track, one, path, New);
    addObserver(track, observers.back(), path, New);
    for (const Ref<Observer>& one : observers) removeObserver(track, one, path);
    setValueForKeyPath(track, "changed", path);
    EXPECT_EQ(std::ranges::count(taken(), '\n'), 1) << "the one that was added twice";
  }
}

/// Lists that were replaced while a change went on must not wait for a moment without any change.
/// (Sanitizers have heaps of their own, which is not looked at.)
TEST_F(KeyValueObserving, KeepsLittleMemoryWhileAChangeGoesOn) {
  addObserver(track, observer, "title", New);
  willChangeValueForKey(track, "title");
  const std::size_t before = mallinfo2().uordblks;
  for (int i = 0; i < 10'000; ++i) {
    addObserver(track, other, "title", New);
    removeObserver(track, other, "title");
  }
  EXPECT_LT(mallinfo2().uordblks, before + 500'000);
  didChangeValueForKey(track, "title");
  EXPECT_EQ(taken(), "titleOne\n");
}

struct StormObserver : NSObject, NSKeyValueObserver {
  void observeValueForKeyPath(const NSString&, const Value& object, const KeyValueChange& change,
                              void*) override {
    told += object.object<Track>() && (change.newValue().isNumber() || change.newValue().isNil());
    if (then) then();
  }
  std::atomic<int> told = 0;
  std::function<void()> then;
};

TEST(KeyValueObservingStorm, ThreadsAddRemoveChangeAndDestroy) {
  const auto root = makeRef<Track>();
  const Ref<Track> middles[] = {makeRef<Track>(), makeRef<Track>(), makeRef<Track>()};
  const auto steady = makeRef<StormObserver>();
  addObserver(root, steady, "plays", New);
  storm(4, [&](int, std::mt19937& random) {
    for (int round = 0; round < 300; ++round) {
      auto mine = makeRef<StormObserver>();
      mine->then = [&root] {
        const auto inner = makeRef<StormObserver>();
        addObserver(root, inner, "plays", New);
        removeObserver(root, inner, "plays");
      };
      addObserver(root, mine, "plays", New | Old);
      addObserver(root, mine, "next.plays", New | Prior);
      send(root, "setPlays:"_sel, round);
      setValueForKey(root, random() % 4 ? middles[random() % 3] : makeRef<Track>(), "next");
      setValueForKey(middles[random() % 3], round, "plays");
      EXPECT_GE(mine->told.load(), 1);
      if (random() % 2) continue;  // the observer dies registered
      removeObserver(root, mine, "plays");
      removeObserver(root, mine, "next.plays");
    }
  });
  EXPECT_EQ(steady->told.load(), 4 * 300) << "no change is lost";
}

}  // namespace zeb::test
