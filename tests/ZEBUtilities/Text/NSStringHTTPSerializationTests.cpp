#include <ZEBUtilities/Text.h>
#include <time.h>

#include "Support/Support.h"

namespace zeb::test {

/// What the system makes of the text; nothing if it finds no timestamp.
static std::optional<double> systemTime(const std::string& text) {
  tm time{};
  if (!strptime(text.c_str(), "%a %b %d %H:%M:%S %z %Y", &time)) return std::nullopt;
  const long offset = time.tm_gmtoff;  // which timegm() overwrites
  return static_cast<double>(timegm(&time) - offset);
}

/// Answers whether the system accepts the text.
static bool expectSame(const std::string& text) {
  const std::optional<double> expected = systemTime(text);
  // The part after the zero selects the implementation for 16-bit units.
  for (const NSString& stored : {NSString(text), NSString(text + std::string("\0\xC3\xA9", 3))}) {
    const NSDate date = zeb_dateFromStringFormattedLikeHTTPDate(stored);
    EXPECT_EQ(!date.isNil(), expected.has_value()) << text;
    EXPECT_EQ(date.timeIntervalSince1970(), expected.value_or(0)) << text;
  }
  return expected.has_value();
}

TEST(NSStringHTTPSerialization, ReadsTimestampsAsTheSystemDoes) {
  for (const char* text :
       {"Wed Aug 27 13:08:45 +0000 2008", "Wed Aug 27 13:08:45 -0730 2008", "", " Wed Aug",
        "Wed Feb 31 23:59:61 Z 2100", "MONDAYSEPTEMBER 1 1:2:3+051999", "Thu Jan 1 0:0:0 +0000 0",
        "Sun Dec 31 23:59:59 -9959 9999",
        "Wed\xC2\xA0"
        "Aug 27 13:08:45 +0000 2008"}) {
    expectSame(text);
  }

  std::mt19937 random(5);
  const auto any = [&](std::initializer_list<const char*> texts) {
    return std::string(texts.begin()[random() % texts.size()]);
  };
  int accepted = 0;
  for (int round = 0; round < 50'000; ++round) {
    const auto space = [&] { return any({" ", " ", " ", " ", "", "  ", "\t", "\n \v\f\r"}); };
    const auto number = [&] {
      return any({"0",  "1",  "03", "7",  "11", "19", "23", "24", "28", "30",
                  "31", "32", "59", "60", "61", "62", "99", "2",  " 5", "007"});
    };
    std::string text =
        any({"Mon", "tue", "WEDNESDAY", "Thurs", "Fri", "Saturday", "Sun", "Sunda"}) + space() +
        any({"Jan", "february", "MARCH", "Apr", "May", "June", "jul", "Aug", "Sept", "Sep",
             "October", "Nov", "december"}) +
        space() + number() + space() + number() + ":" + number() + ":" + number() + space() +
        any({"+0000", "-0730", "Z", "z", "+05:30", "-1", "+12", "+123", "+1260", "+9959",
             "+05:", "-12:3", "+", "0000", "+1400", "UTC"}) +
        space() + any({"2008", "1970", "0", "9999", "12345", "1900", "99", "2000", "1969", "-1"});
    // Some texts get a fault: one character is replaced.
    if (round % 4 == 0) text[static_cast<std::size_t>(round) % text.size()] = " :x+Z1"[round % 6];
    accepted += expectSame(text);
  }
  EXPECT_TRUE(accepted > 1000 && accepted < 49'000) << accepted;
  EXPECT_TRUE(zeb_dateFromStringFormattedLikeHTTPDate(nullptr).isNil());
}

}  // namespace zeb::test
