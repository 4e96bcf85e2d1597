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
