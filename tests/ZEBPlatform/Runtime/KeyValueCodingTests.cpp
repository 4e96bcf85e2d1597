#include <ZEBPlatform/Foundation/NSNull.h>
#include <ZEBPlatform/Runtime.h>

#include "Support/Support.h"
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

struct Shelf : NSObject {
  using Counts = std::map<std::string, std::optional<int>>;
  Class* classObject() const override {
    static Class* const cls = registerClass(
        "Shelf", {property(
                      "names", [](const Shelf& self) { return self.names; },
                      [](Shelf& self, std::vector<std::string> given) { self.names = given; }),
                  property(
                      "counts", [](const Shelf& self) { return self.counts; },
                      [](Shelf& self, const Counts& given) { self.counts = given; }),
                  property(
                      "width", [](const Shelf& self) { return self.width; },
                      [](Shelf& self, std::optional<double> given) { self.width = given; })});
    return cls;
  }
  std::vector<std::string> names;
  Counts counts;
  std::optional<double> width;
};

TEST(KeyValueCoding, ConvertsOptionalsAndContainers) {
  const auto shelf = makeRef<Shelf>();
  const NSArray names{"one", "two"}, empty = NSArray::array();
  const NSDictionary counts{{"a", 1}, {"b", NSNull::null()}};
  const struct {
    NSString key;
    Value value, stored, wrong;
  } cases[] = {
      {"names", names, names, NSArray{"one", 2}},
      {"names", nullptr, empty, "no array"},
      {"counts", counts, counts, NSDictionary{{"a", "1"}, {"b", empty}}},
      {"counts", nullptr, NSDictionary::dictionary(), empty},
      {"width", 2.5, 2.5, empty},
      {"width", nullptr, nullptr, empty},
  };
  for (const auto& [key, value, stored, wrong] : cases) {
    const auto setWrong = [&] { setValueForKey(shelf, wrong, key); };
    EXPECT_EQ(raisedName(setWrong), NSInvalidArgumentException) << key << wrong;
    setValueForKey(shelf, value, key);
    EXPECT_EQ(valueForKey(shelf, key), stored) << key;
  }
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
  EXPECT_EQ(raisedName([&] { setValueForKey(track, NSArray::array(), "title"); }),
            NSInvalidArgumentException);
}

}  // namespace zeb::test
