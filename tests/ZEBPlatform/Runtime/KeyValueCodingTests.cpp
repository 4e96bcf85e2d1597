#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSNull.h>
#include <ZEBPlatform/Runtime/NSKeyValueCoding.h>
#include <ZEBPlatform/Runtime/Send.h>

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

  const struct {
    Value receiver;
    const char* path;
    Value value;
  } cases[] = {
      {track, "title", "Uno"},
      {track, "next.plays", 7},
      {track, "next.next.title", nullptr},
      {track, "title.length", 3},
      {track, "next.description.length", Value(next).description().length()},
      {shelf, "first.next.title", "Two"},
      {shelf, "extra", nullptr},
      {nullptr, "anything.at all", nullptr},
  };
  for (const auto& one : cases)
    EXPECT_EQ(valueForKeyPath(one.receiver, one.path), one.value) << one.path;
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
  const struct {
    NSString key;
    Value value, stored;
    Value wrong;
  } cases[] = {
      {"names", NSArray{"one", "two"}, NSArray{"one", "two"}, NSArray{"one", 2}},
      {"names", nullptr, NSArray::array(), "no array"},
      {"counts", NSDictionary{{"a", 1}, {"b", NSNull::null()}},
       NSDictionary{{"a", 1}, {"b", NSNull::null()}},
       NSDictionary{{"a", "1"}, {"b", NSArray::array()}}},
      {"counts", nullptr, NSDictionary::dictionary(), NSArray::array()},
      {"width", 2.5, 2.5, NSArray::array()},
      {"width", nullptr, nullptr, NSArray::array()},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(raisedName([&] { setValueForKey(shelf, one.wrong, one.key); }),
              NSInvalidArgumentException)
        << one.key << one.wrong;
    setValueForKey(shelf, one.value, one.key);
    EXPECT_EQ(valueForKey(shelf, one.key), one.stored) << one.key;
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
