#include <ZEBPlatform/Foundation.h>
#include <ZEBPlatform/Json.h>
#include <unistd.h>

#include <fstream>
#include <latch>

#include "Support/Storm.h"

namespace zeb::test {

constexpr std::uint64_t fragments = NSJSONReadingFragmentsAllowed;
constexpr std::string_view sample =
    "{\"name\":\"caf\xC3\xA9 \xF0\x9F\x98\x80\",\"esc\\u0061ped\":\"a\\n\\ud83d\\\"b\",\"list\":"
    "[1,-2.5e3,18446744073709551615,true,false,null,[],{}],\"long\":"
    "\"0123456789abcdef0123456789\"}";

Value read(std::string_view text, std::uint64_t options = fragments, NSError* error = nullptr) {
  return NSJSONSerialization::JSONObjectWithData(NSData::dataWithBytes(text), options, error);
}

std::int64_t offsetOf(const NSError& error) {
  return error.userInfo()[NSString(NSJSONSerializationErrorIndexKey)].longLongValue();
}

TEST(JsonReader, Accepts) {
  // clang-format off
  const std::pair<const char*, Value> cases[] = {
      {"null", NSNull::null()}, {" true ", true}, {"\t\r\nfalse", false},
      {" [] ", NSArray::array()}, {"{}", NSDictionary::dictionary()},
      {"[1,[2,[]],{\"a\":3}]", NSArray{1L, NSArray{2L, NSArray::array()}, NSDictionary{{"a", 3L}}}},
      {"{\"b\" : 0.5 , \"\" : null}", NSDictionary{{"b", 0.5}, {"", NSNull::null()}}},
      // Strings.
      {"\"\"", ""}, {"\"\x7F\"", "\x7F"}, {"\"a/b\\/c\\\\d\\\"e\"", "a/b/c\\d\"e"},
      {"\"\\b\\f\\n\\r\\t\"", "\b\f\n\r\t"}, {"1E+2", 100.0}, {"1.5e-3", 0.0015},
      {"\"\\u0041\\u00e9\\u20AC\\u20ac\"", "A\xC3\xA9\xE2\x82\xAC\xE2\x82\xAC"},
      {"\"\\u0000x\"", "\0x"_ns}, {"\"\\ud83d\\ude00\"", "\xF0\x9F\x98\x80"},
      {"\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\"", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {"\"\\uD83D\"", NSString(std::u16string_view(u"\xD83D"))},
      {"\"\\ude00\\ud83d\"", NSString(std::u16string_view(u"\xDE00\xD83D"))},
      {"{\"\\ud800\":1}", NSDictionary{{NSString(std::u16string_view(u"\xD800")), 1L}}},
      // Numbers, with their types.
      {"0", 0L}, {"-1", -1L}, {"9007199254740993", 9007199254740993L},
      {"9223372036854775807", 9223372036854775807L},
      {"-9223372036854775808", -9223372036854775807L - 1},
      {"9223372036854775808", 9223372036854775808UL}, {"18446744073709551615", ~0UL},
      {"18446744073709551616", 18446744073709551616.0},
      {"-9223372036854775809", -9223372036854775808.0}, {"-0", -0.0}, {"-0.0", -0.0},
      {"-0e5", -0.0}, {"1.0", 1.0}, {"1e0", 1.0},
      {"123456789012345678901234567890", 123456789012345678901234567890.0},
      {"9007199254740993.0", 9007199254740992.0},
      {"2.2250738585072011e-308", 2.2250738585072011e-308},
      {"1.00000000000000011102230246251565404236316680908203125", 1.0},
      {"1.00000000000000011102230246251565404236316680908203126", 1.0000000000000002},
      {"1.7976931348623157e308", 1.7976931348623157e308}, {"5e-324", 5e-324}, {"0e400", 0.0},
      {"-1e-400", -0.0}, {"1e-99999999999999999999", 0.0},
      {"0.000000000000000000000000000000000000001", 1e-39}};
  // clang-format on
  for (const auto& [text, expected] : cases) {
    NSError error;
    const Value value = read(text, fragments, &error);
    EXPECT_TRUE(value == expected && error.isNil()) << text << " is read as " << value;
    EXPECT_TRUE(!value.isNumber() || value.isIdenticalTo(expected)) << text << " as " << value;
    EXPECT_EQ(read(text, 0).isNil(), !value.isArray() && !value.isDictionary()) << text;
  }
  // The size of the whole number decides, not its form.
  const std::string zeros(400, '0');
  EXPECT_EQ(read("1" + zeros + "e-400"), 1);
  EXPECT_EQ(read("0." + zeros + "1e401"), 1);
  EXPECT_EQ(read("0." + zeros + "1e10"), 0);
  EXPECT_TRUE(read("1" + zeros + "e-10").isNil());
}

TEST(JsonReader, ErrorsContainFaultAndPosition) {
  using Fault = std::pair<std::string_view, std::int64_t>;
  // clang-format off
  const std::pair<const char*, std::vector<Fault>> groups[] = {
      {"A value was expected",
       {{"[1,]", 3}, {"[,1]", 1}, {"{\"a\":}", 5}, {"[nul]", 1}, {"[nulll]", 1}, {"[True]", 1},
        {"[true\"\"]", 1}, {"['a']", 1}, {"[\\\"a\"]", 1}, {"[/**/1]", 1}, {"[\xC2\xA0]", 1},
        {"[+1]", 1}, {"[.5]", 1}, {"[NaN]", 1}}},
      {"A value is missing at the end", {{"[", 1}, {"[1,", 3}, {"{\"a\":", 5}}},
      {"An array is not closed", {{"[1", 2}}}, {"A dictionary is not closed", {{"{\"a\":1", 6}}},
      {"A comma or the array's end was expected", {{"[1 2]", 3}, {"[1}", 2}, {"[\"a\"b]", 4}}},
      {"A comma or the dictionary's end was expected", {{"{\"a\":1]", 6}}},
      {"A key is missing at the end", {{"{", 1}, {"{\"a\":1,", 7}}},
      {"A key was expected", {{"{\"a\":1,}", 7}, {"{1:2}", 1}}},
      {"A colon was expected", {{"{\"a\"", 4}, {"{\"a\" 1}", 5}}},
      {"Something follows the root", {{"[] []", 3}, {"[]]", 2}}},
      {"No value", {{"", 0}, {"\t ", 2}}},
      {"The root is neither an array nor a dictionary", {{"1", 0}, {" \"text\"", 1}, {"null", 0}}},
      {"A digit was expected", {{"[-]", 1}, {"[-Infinity]", 1}, {"[1.]", 1}, {"[1e+", 1}}},
      {"A number must not begin with zeros", {{"[01]", 1}, {"[-00.5]", 1}}},
      {"Malformed number", {{"[1.5x]", 4}, {"[0x1F]", 2}, {"[1\"\"]", 2}}},
      {"Number too large for a double", {{"[1e400]", 1}, {"[1,-1e99999999999999999999]", 3}}},
      {"Unterminated string", {{"[\"a", 1}, {"[\"a\\\"]", 1}, {"\"\\", 0}}},
      {"Unescaped control character in a string", {{"[\"a\nb\"]", 3}, {"[\"\x1F\"]", 2}}},
      {"Unknown escape in a string", {{"[\"\\x\"]", 2}, {"[\"ab\\U41\"]", 4}, {"{\"\\q\":1}", 2}}},
      {"Four hexadecimal digits were expected", {{"[\"\\u12\"]", 2}, {"[\"\\u12g4\"]", 2}}},
      {"Malformed UTF-8",
       {{"[\"\xC0\xAF\"]", 2}, {"[\"\xED\xA0\x80\"]", 2}, {"[\"\xE2\x82\"]", 2}, {"\x80", 0}}}};
  // clang-format on
  for (const auto& [message, faults] : groups) {
    for (const auto& [text, offset] : faults) {
      NSError error;
      EXPECT_TRUE(read(text, 0, &error).isNil() && read(text, 0).isNil()) << text;
      EXPECT_TRUE(error.domain() == NSCocoaErrorDomain && error.code() == 3840);
      EXPECT_EQ(offsetOf(error), offset) << text;
      const auto expected = NSString::stringWithFormat("%s at line 1, column %d (byte offset %d).",
                                                       message, offset + 1, offset);
      EXPECT_EQ(error.localizedDescription(), expected) << text;
    }
  }
  NSError error;
  read("[\n \"\xC3\xA9\",\n  x]", 0, &error);
  EXPECT_STREQ(error.what(), "A value was expected at line 3, column 3 (byte offset 11).");
}

TEST(JsonReader, StopsAtTheDepthLimit) {
  const auto nested = [](std::size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
  };
  EXPECT_FALSE(read(nested(512)).isNil());
  std::string wide = "[";
  for (int turn = 0; turn < 1000; ++turn) wide += nested(511) + ",";
  EXPECT_EQ(NSArray(read(wide + "0]")).count(), 1001u) << "closed levels do not count";
  for (const std::string& text : {nested(513), nested(100'000), std::string(100'000, '[')}) {
    NSError error;
    runOnSmallStack([&] { EXPECT_TRUE(read(text, 0, &error).isNil()); });
    EXPECT_STREQ(error.what(),
                 "Nested more than 512 levels deep at line 1, column 513 (byte offset 512).");
  }
}

TEST(JsonReader, SurvivesTruncationAndDamageEverywhere) {
  EXPECT_EQ(NSDictionary(read(sample)).count(), 4u);
  std::string damaged(sample);
  for (std::size_t place = 0; place < sample.size(); ++place) {
    NSError error;
    EXPECT_TRUE(read(sample.substr(0, place), fragments, &error).isNil()) << place;
    EXPECT_TRUE(error && offsetOf(error) <= static_cast<std::int64_t>(place)) << error;
    for (const char wrong : {'"', '\\', '{', ']', ',', '\0', '\x80', '\xF4', '9', 'e', ' '}) {
      damaged[place] = wrong;
      error = nullptr;
      const Value value = read(damaged, fragments, &error);
      EXPECT_TRUE(value.isNil() != error.isNil() && value.description()) << damaged;
    }
    damaged[place] = sample[place];
  }
}

TEST(JsonReader, LastOfEqualKeysWinsAtTheFirstOnesPlace) {
  for (const std::size_t others : {0u, 5u, 50u}) {
    std::string text = "{\"a\":1,\"\\u0061\":2,\"\xC3\xA9\":3";
    for (std::size_t i = 0; i < others; ++i) text += ",\"k" + std::to_string(i) + "\":0";
    const NSDictionary dictionary(read(text + ",\"\\u00e9\":4,\"a\":5}"));
    EXPECT_EQ(dictionary.count(), others + 2);
    EXPECT_TRUE(dictionary.begin()->value == 5 && (++dictionary.begin())->value == 4);
  }
}

TEST(JsonReader, StaysFastWithCollidingKeys) {
  const std::vector<std::string> keys = collidingKeys(3000);
  std::string text = "{";
  for (std::size_t i = 0; i < 2 * keys.size(); ++i) {
    text += '"' + keys[i % keys.size()] + "\":" + std::to_string(i) + ',';
  }
  const NSDictionary dictionary(read(text + "\"plain\":\"x\"}"));
  EXPECT_TRUE(dictionary.count() == keys.size() + 1 && dictionary["plain"] == "x");
  EXPECT_TRUE(dictionary.storageAs<detail::DictionaryStorage>()->hasKeyedHash());
  for (std::size_t i = 0; i < 3000; ++i) ASSERT_EQ(dictionary[NSString(keys[i])], 3000 + i);
}

TEST(JsonReader, MakesLeavesAndCollectionsMutable) {
  for (const std::uint64_t options : {0u, 1u, 2u, 3u}) {
    const NSDictionary root(read("{\"list\":[\"text\",{\"k\":\"\xC3\xA9\"},1]}", options));
    const NSArray list(root["list"]);
    const NSDictionary inner(list[1]);
    EXPECT_EQ(root, (NSDictionary{{"list", NSArray{"text", NSDictionary{{"k", "\xC3\xA9"}}, 1}}}));
    const bool containers = options & NSJSONReadingMutableContainers;
    const bool leaves = options & NSJSONReadingMutableLeaves;
    for (const Value* value : std::initializer_list<const Value*>{&root, &list, &inner})
      EXPECT_EQ(value->isMutable(), containers);
    for (const Value& value : {list[0], inner["k"]}) EXPECT_EQ(value.isMutable(), leaves);
    EXPECT_FALSE(root.allKeys()[0].isMutable());
    NSMutableArray::from(list).addObject("more");
    EXPECT_EQ(NSArray(root["list"]).count(), containers ? 4u : 3u);
  }
  EXPECT_TRUE(read("\"text\"", fragments | NSJSONReadingMutableLeaves).isMutable());
}

TEST(JsonReader, DocumentLivesAsLongAsAnyOfItsValues) {
  const auto isInDocument = [](const Value& value) {
    return value.isCounted() && value.storage()->flags & detail::StorageInArena;
  };
  Value document = read(sample);
  Value list = NSDictionary(document)["list"];
  const NSDictionary detached(document.detachedCopy());
  const NSDictionary other{{list, list}};
  EXPECT_TRUE(detached == document && isInDocument(list));
  document = list = nullptr;
  EXPECT_EQ(other[other.allKeys()[0]], detached["list"]);
  for (const auto& [key, value] : detached) {
    EXPECT_FALSE(isInDocument(detached) || isInDocument(key) || isInDocument(value)) << key;
  }
}

TEST(JsonReader, ThreadsReadAndShareDocuments) {
  const Value shared = read(sample);
  storm(3, [&](int thread, std::mt19937&) {
    const Value own = thread == 0 ? read(sample) : shared;
    for (int turn = 0; turn < 200; ++turn) {
      const Value list = NSDictionary(shared)["list"];
      EXPECT_TRUE(read(sample) == own && NSArray(NSDictionary(own)["list"]).copy() == list);
    }
  });
}

TEST(JsonReader, IdleThreadsKeepLittleWorkingMemory) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "Sanitizers keep freed memory and memory of their own resident.";
#endif
  constexpr int threads = 24;
  // Whose tree is nothing, but whose places take four bytes each while it is read.
  const std::string text = "[" + std::string(std::size_t{5} << 18, ',');
  const auto residentBytes = [] {
    std::size_t program = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> program >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  };
  const std::size_t before = residentBytes();
  std::size_t growth = 0;
  std::latch haveRead(threads), measured(1);
  storm(threads + 1, [&](int thread, std::mt19937&) {
    if (thread < threads) {
      EXPECT_TRUE(read(text).isNil());
      haveRead.count_down();
      return measured.wait();
    }
    haveRead.wait();
    growth = residentBytes() - before;
    measured.count_down();
  });
  constexpr std::size_t shared = std::size_t{32} << 20;
  constexpr std::size_t each = std::size_t{1} << 20;
  EXPECT_LT(growth, shared + threads * each);
}

struct Form {
  std::size_t unitSize;
  bool bigEndian;
};
constexpr Form forms[] = {{1, false}, {2, false}, {2, true}, {4, false}, {4, true}};

/// The text in UTF-8, or as units of the given size, well-formed or not.
std::string encoded(std::u16string_view text, const Form& form) {
  if (form.unitSize == 1) return NSString(text).utf8();
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t unit = text[i];
    if (form.unitSize == 4 && (unit & 0xFC00) == 0xD800 && (text[i + 1] & 0xFC00) == 0xDC00) {
      unit = 0x10000 + ((unit & 0x3FF) << 10) + (text[++i] & 0x3FFu);
    }
    for (std::size_t index = 0; index < form.unitSize; ++index) {
      const std::size_t place = form.bigEndian ? form.unitSize - 1 - index : index;
      bytes += static_cast<char>(unit >> (8 * place));
    }
  }
  return bytes;
}

TEST(JsonEncoding, EveryFormReadsAndFailsTheSameWithAndWithoutMark) {
  // What is before the fault, the rest, and the position.
  const std::tuple<std::u16string, std::u16string, const char*> faults[] = {
      {u"[\n\"\U0001F600\u00E9\", ", u"x]", "line 2, column 7"},
      {u"[\"", u"\xD83Dx\"]", "line 1, column 3"},
      {u"[\"", u"\xDE00\"]", "line 1, column 3"},
      {u"[\"", u"\xD83D\xD83D\"]", "line 1, column 3"}};
  NSError error;
  for (const Form& form : forms) {
    for (const std::u16string mark : {u"", u"\uFEFF"}) {
      SCOPED_TRACE(&form - forms);
      const std::string whole = encoded(mark + u"[\"\u00E9\u20AC\U0001F600\"]", form);
      EXPECT_EQ(read(whole), NSArray{"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"});
      EXPECT_EQ(read(encoded(mark + u"7", form)), 7);
      for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_TRUE(read(whole.substr(0, length)).isNil()) << length;
      }
      for (const auto& [start, rest, position] : faults) {
        const char* fault = rest == u"x]"        ? "A value was expected"
                            : form.unitSize == 1 ? "Malformed UTF-8"
                                                 : "Malformed UTF-16 or UTF-32";
        const std::u16string before = mark + start;
        EXPECT_TRUE(read(encoded(before + rest, form), fragments, &error).isNil());
        const auto expected = NSString::stringWithFormat("%s at %s (byte offset %zu).", fault,
                                                         position, encoded(before, form).size());
        EXPECT_EQ(error.localizedDescription(), expected);
      }
    }
  }
  EXPECT_TRUE(read(std::string_view("[\0\0\0\0\0\x11\0", 8), fragments, &error).isNil())
      << "beyond U+10FFFF";
  EXPECT_STREQ(error.what(), "Malformed UTF-16 or UTF-32 at line 1, column 2 (byte offset 4).");
}

TEST(JsonReaderDeathTest, ReadsWhileTheProcessExits) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a process in which nothing has been read yet
  const auto exitFromAThreadThatHasRead = [] {
    std::atexit([] {
      const auto readOrFail = [] {
        if (read(sample).isNil()) std::_Exit(1);
      };
      readOrFail();
      std::thread(readOrFail).join();
    });
    std::thread([] {
      read(sample);
      std::exit(0);
    }).join();
  };
  EXPECT_EXIT(exitFromAThreadThatHasRead(), testing::ExitedWithCode(0), "");
}

}  // namespace zeb::test
