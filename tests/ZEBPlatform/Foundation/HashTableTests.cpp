#include <ZEBPlatform/Foundation.h>

#include "Support/Support.h"

namespace zeb::test {

TEST(DictionaryKey, EveryKindOfTextHashesAndMatchesAlike) {
  const auto check = [](const StringKey& literal, const NSString& string) {
    const NSDictionary dictionary{{"other", 0}, {string, 1}};
    const std::string text(string);
    const NSMutableString mutableText(string);
    const DictionaryKey keys[] = {literal,       string, mutableText,
                                  Value(string), text,   std::string_view(text)};
    for (const DictionaryKey& key : keys) {
      EXPECT_TRUE(key.hash() == literal.hash() && key.string() == string) << string;
      EXPECT_TRUE(dictionary[key] == 1 && dictionary.contains(key)) << string;
    }
    EXPECT_FALSE(dictionary.contains(text + "x")) << string;
  };
  check("", "");
  check("abcdefg", "abcdefg");
  check("abcdefghijklmnopq", "abcdefghijklmnopq");
  check("abcdefghijklmnopqrstuvwxyz_0123456789", "abcdefghijklmnopqrstuvwxyz_0123456789");
  check("a\0b", "a\0b"_ns);
  check("\xC3\xA9t\xC3\xA9", "\xC3\xA9t\xC3\xA9");
  check("\xE3\x82\xAD\xE3\x83\xBC\xF0\x9F\x98\x80", std::u16string_view(u"\u30AD\u30FC\U0001F600"));
  char buffer[8] = "abc";
  const char* pointer = buffer;
  char* none = nullptr;
  const NSDictionary dictionary{{"abc", 1}, {"", 2}};
  EXPECT_TRUE(dictionary[buffer] == 1 && dictionary[pointer] == 1 && dictionary[""] == 2);
  for (const DictionaryKey& nil :
       {DictionaryKey(NSString()), DictionaryKey(Value()), DictionaryKey(none)}) {
    EXPECT_TRUE(nil.isNil() && nil.string().isNil() && !nil.otherValue());
    EXPECT_FALSE(dictionary.contains(nil));
  }
}

TEST(NSDictionary, BehavesLikeAModelUnderRandomChanges) {
  std::mt19937 random(7);
  for (const unsigned universe : {6u, 40u, 500u}) {
    NSMutableDictionary dictionary;
    std::vector<std::pair<NSString, int>> model;
    for (int step = 0; step < 6000; ++step) {
      const auto key = NSString::stringWithFormat("cl\xC3\xA9 %lu", random() % universe);
      const auto isKey = [&](const auto& entry) { return entry.first == key; };
      const auto place = std::find_if(model.begin(), model.end(), isKey);
      const bool known = place != model.end();
      ASSERT_EQ(dictionary[key], known ? Value(place->second) : Value());
      if (random() % 1000 == 0) {
        dictionary.removeAllObjects();
        model.clear();
      } else if (random() % 9 < 4) {
        dictionary.removeObjectForKey(key);
        if (known) model.erase(place);
      } else {
        dictionary.setObject(step, key);
        (known ? *place : model.emplace_back(key, step)).second = step;
      }
      ASSERT_EQ(dictionary.count(), model.size());
      if (step % 100) continue;
      auto expected = model.begin();
      for (const auto& [storedKey, value] : dictionary) ASSERT_EQ(value, expected++->second);
      ASSERT_TRUE(dictionary == dictionary.copy() && dictionary == dictionary.detachedCopy());
    }
  }
}

TEST(NSDictionary, IsEqualInAnyOrderAndTakesNoNil) {
  NSMutableDictionary dictionary{{"c", 1}, {"a", 2}, {"b", 3}, {"a", 4}};
  EXPECT_EQ(dictionary.allKeys(), (NSArray{"c", "a", "b"}));
  EXPECT_EQ(dictionary.allValues(), (NSArray{1, 4, 3}));
  EXPECT_EQ(dictionary, (NSDictionary{{"a", 4}, {"b", 3}, {"c", 1}}));
  EXPECT_NE(dictionary, (NSDictionary{{"a", 4}, {"b", 0}, {"c", 1}}));
  dictionary.addEntriesFromDictionary(dictionary);
  EXPECT_EQ(dictionary.count(), 3u);
  EXPECT_EQ(raisedName([&] { dictionary.setObject(1, nullptr); }), NSInvalidArgumentException);
  EXPECT_EQ(raisedName([] { NSDictionary({{"k", nullptr}}); }), NSInvalidArgumentException);
}

TEST(NSDictionary, RemovalKeepsIterationQuickAndGivesMemoryBack) {
  constexpr int count = 60'000;
  NSMutableDictionary fromFront, second, fromBack;
  const auto all = {&fromFront, &second, &fromBack};
  for (NSMutableDictionary* one : all) {
    for (int i = 0; i < count; ++i) one->setObject(i, Value(i));
  }
  for (int i = 0; i < count - 1; ++i) {
    ASSERT_TRUE(fromFront.begin()->key == i && second.begin()->key == 0);
    fromFront.removeObjectForKey(fromFront.begin()->key);
    second.removeObjectForKey((++second.begin())->key);
    fromBack.removeObjectForKey(Value(count - 1 - i));
  }
  for (const NSMutableDictionary* one : all) {
    EXPECT_LT(one->storageAs<detail::DictionaryStorage>()->capacity, 32u);
  }
  EXPECT_EQ(fromFront, (NSDictionary{{count - 1, count - 1}}));
  EXPECT_TRUE(fromBack == second && fromBack.allKeys() == NSArray{0});
}

TEST(NSDictionary, GrowsToManyOrdinaryKeysUnderThePublicHash) {
  NSMutableDictionary dictionary;
  const auto key = [](int number) { return NSString::stringWithFormat("k%d", number); };
  for (int i = 0; i < 100'000; ++i) {
    dictionary.setObject(i, key(i));
    if (i < 10'000) dictionary.setObject(i, NSDictionary{{"id", i}, {"parent", NSArray{i}}});
  }
  for (int i = 0; i < 100'000; ++i) {
    const NSString stored = key(i), absent = key(-1 - i);
    for ([[maybe_unused]] const bool isHashed : {false, true})
      ASSERT_TRUE(dictionary[stored] == i && !dictionary[absent]);
  }
  NSMutableDictionary equalHashes;
  for (int i = 0; const NSString text : collidingKeys(40)) {
    if (++i <= 20) equalHashes.setObject(i, text.mutableCopy());
    ASSERT_NE(StringKey(text).hash(), 0u) << "from now on the text knows its hash";
    EXPECT_EQ(equalHashes[text], i <= 20 ? Value(i) : Value());
  }
  EXPECT_EQ(dictionary.count(), 110'000u);
  EXPECT_FALSE(dictionary.storageAs<detail::DictionaryStorage>()->hasKeyedHash());
}

/// The largest number of slots that a search in the table has to look at.
std::uint32_t longestProbe(const Value& dictionaryOrSet) {
  const auto& table = *dictionaryOrSet.storageAs<detail::DictionaryStorage>();
  std::uint32_t longest = 0;
  for (std::uint32_t slot = 0, run = 0; slot <= table.indexMask; ++slot) {
    run = table.index()[slot] ? run + 1 : 0;
    longest = std::max(longest, run);
  }
  return longest;
}

/// Numbers whose public hashes are equal: the hash's steps undone from different ends.
std::vector<std::uint64_t> collidingNumbers(std::size_t count) {
  const auto inverse = [](std::uint64_t odd) {
    std::uint64_t result = odd;
    for (int step = 0; step < 6; ++step) result *= 2 - odd * result;
    return result;
  };
  std::vector<std::uint64_t> numbers;
  for (std::uint64_t end = 0; numbers.size() < count; ++end) {
    std::uint64_t word = (std::uint64_t{0xABCDEF} << 32 | end) * inverse(0xD6E8FEB86659FD93u);
    word ^= word >> 29 ^ word >> 58;
    numbers.push_back(word * inverse(0x9E3779B97F4A7C15u));
  }
  return numbers;
}

TEST(NSDictionary, DefendsItselfAgainstChosenKeysOfEveryKind) {
  constexpr std::size_t count = 1000;
  const std::vector<std::string> texts = collidingKeys(count);
  const auto numbers = collidingNumbers(count);
  const auto nested = [](Value value) {
    for (int level = 0; level < 50; ++level) value = NSArray{value};
    return value;
  };
  const std::string ends(1000, 'x');
  using Maker = std::function<Value(std::size_t)>;
  const std::pair<const char*, Maker> makers[] = {
      {"text", [&](std::size_t i) { return NSString(texts[i]); }},
      {"number", [&](std::size_t i) { return Value(numbers[i]); }},
      {"URL",
       [&](std::size_t i) {
         const NSURL url = NSURL::URLWithString(texts[i]);
         return url.isNil() ? NSURL::URLWithString(std::to_string(i)) : url;
       }},
      {"data", [&](std::size_t i) { return NSData::dataWithBytes(ends + texts[i] + ends); }},
      {"array", [&](std::size_t i) { return NSArray{texts[i]}; }},
      {"deep array", [&](std::size_t i) { return nested(i); }},
      {"dictionary", [&](std::size_t i) { return NSDictionary{{"id", texts[i]}}; }},
      {"dictionary by key", [&](std::size_t i) { return NSDictionary{{texts[i], 1}}; }},
      {"deep dictionary",
       [&](std::size_t i) { return NSDictionary{{"a", NSDictionary{{"b", nested(i)}}}}; }},
      {"set", [&](std::size_t i) { return NSSet{NSSet{texts[i]}, 1}; }}};
  for (const auto& [kind, make] : makers) {
    NSMutableDictionary dictionary;
    NSMutableSet set;
    for (std::size_t i = 0; i < count; ++i) {
      dictionary.setObject(i, make(i));
      set.addObject(make(i));
    }
    EXPECT_TRUE(dictionary.count() == count && set.count() == count) << kind;
    EXPECT_LT(std::max(longestProbe(dictionary), longestProbe(set)), 256u) << kind;
    dictionary.setObject("ordinary", "\xC3\xA9");
    for (const NSDictionary& table :
         {NSDictionary(dictionary), dictionary.copy(), NSDictionary(dictionary.detachedCopy())}) {
      for (std::size_t i = 0; i < count; i += 100) EXPECT_EQ(table[make(i)], i) << kind;
      EXPECT_TRUE(table["\xC3\xA9"] == "ordinary" && table == dictionary) << kind;
    }
    for (std::size_t i = 0; i < count; i += 2) dictionary.removeObjectForKey(make(i));
    for (std::size_t i = 0; i < count; i += 99) EXPECT_EQ(!dictionary[make(i)], i % 2 == 0) << kind;
  }
  const std::uint32_t hash = StringKey(texts[0]).hash();
  for (const std::string& text : texts) ASSERT_EQ(StringKey(text).hash(), hash);
}

TEST(NSDictionary, TakesAnyValueAsKeyByCopy) {
  NSMutableString text("key"_ns);
  NSMutableArray list{1};
  const auto date = [] { return NSDate::dateWithTimeIntervalSince1970(5); };
  const NSMutableDictionary dictionary{
      {text, "text"},   {list, "list"},           {1, "number"},
      {date(), "date"}, {NSNull::null(), "null"}, {NSSet{1, 2}, "set"}};
  text.appendString("!");
  list.addObject(2);
  EXPECT_TRUE(dictionary["key"] == "text" && dictionary[text].isNil());
  EXPECT_TRUE(dictionary[NSArray{1}] == "list" && dictionary[list].isNil());
  EXPECT_TRUE(dictionary[Value(1.0)] == "number" && dictionary[Value(true)] == "number");
  EXPECT_TRUE(dictionary[Value("1")].isNil() && dictionary[date()] == "date");
  for (const auto& [key, value] : dictionary) EXPECT_EQ(dictionary[key], value) << key;
  EXPECT_TRUE(dictionary[NSNull::null()] == "null" && (dictionary[NSSet{2, 1}] == "set"));
  EXPECT_FALSE(dictionary.allKeys()[0].isMutable() || dictionary.allKeys()[1].isMutable());
}

TEST(NSDictionary, TakesWhatItHoldsAsArguments) {
  const auto text = [](int number) { return NSString::stringWithFormat("text %d", number); };
  NSMutableDictionary dictionary{{text(0), text(1)}};
  // Each value becomes the next key, also where the table grows under it.
  for (int i = 1; i < 1000; ++i) {
    dictionary.setObject(text(i + 1), *dictionary.find(text(i - 1)));
    ASSERT_TRUE(dictionary[text(i)] == text(i + 1));
  }
  while (dictionary.count()) dictionary.removeObjectForKey(dictionary.begin()->key);
}

TEST(NSDictionary, ReleasesValuesWhenItsOwnStateIsInOrder) {
  struct ChangesItsOwner : NSObject {
    explicit ChangesItsOwner(Value dictionary) : owner(std::move(dictionary)) {}
    ~ChangesItsOwner() override { NSMutableDictionary::from(owner).setObject("late", "key"); }
    const Value owner;
  };
  NSMutableDictionary dictionary;
  dictionary.setObject(makeRef<ChangesItsOwner>(dictionary), "key");
  dictionary.setObject(1, "key");
  EXPECT_EQ(dictionary["key"], "late");
  dictionary.setObject(makeRef<ChangesItsOwner>(dictionary), "key");
  dictionary.removeObjectForKey("key");
  dictionary.setObject(makeRef<ChangesItsOwner>(dictionary), "other");
  dictionary.removeAllObjects();
  EXPECT_EQ(dictionary, (NSDictionary{{"key", "late"}}));
}

TEST(NSSet, HoldsDifferentMembers) {
  const NSString first("a");
  NSMutableSet set{first, "a", 1, 1.0, true, NSArray{1}, NSArray{1u}};
  EXPECT_TRUE(set.member("a").isIdenticalTo(first)) << "the member that was there first stays";
  EXPECT_TRUE(set.containsObject(1u) && !set.containsObject("1") && !set.containsObject(nullptr));
  EXPECT_EQ(set.allObjects(), (NSArray{"a", 1, NSArray{1}}));
  const NSSet twin{NSArray{1}, 1, "a"};
  EXPECT_TRUE(set == twin && set.hash() == twin.hash()) << "order does not count";
  EXPECT_FALSE(set.isEqual(NSSet{"a", 1, NSArray{2}}));
  set.removeObject("a");
  EXPECT_TRUE(set.anyObject() == 1 && std::distance(set.begin(), set.end()) == 2);
  EXPECT_EQ(raisedName([&] { set.addObject(nullptr); }), NSInvalidArgumentException);
}

}  // namespace zeb::test
