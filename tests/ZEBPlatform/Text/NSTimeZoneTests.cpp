#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBPlatform/Text/RuleTimeZonePrivate.h>
#include <ZEBPlatform/Text/SystemTimeZonePrivate.h>

#include <filesystem>
#include <fstream>

#include "Support/DateSettings.h"
#include "Support/Support.h"

namespace zeb::test {

namespace {

namespace fs = std::filesystem;

constexpr const char* zoneFolder = "/usr/share/zoneinfo";

/// "+HHMM abbreviation", with "*" in daylight-saving time.
std::string timeOf(const NSTimeZone& zone, double seconds) {
  const NSDate date = since1970(seconds);
  const std::int64_t minutes = zone.secondsFromGMT(date) / 60;
  return formattedText("%+05lld %@%s", {minutes / 60 * 100 + minutes % 60, zone.abbreviation(date),
                                        zone.isDaylightSavingTime(date) ? "*" : ""});
}

std::string nameOf(const Ref<NSTimeZone>& zone) { return zone ? zone->name().utf8() : "nil"; }

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void write(const fs::path& file, const std::string& content) {
  std::ofstream(file, std::ios::binary) << content;
}

/// A folder in place of /etc, and no TZ in the environment, for as long as it lives.
struct SystemFolder {
  SystemFolder() : path(fs::temp_directory_path() / ("zeb-zones-" + std::to_string(getpid()))) {
    unsetenv("TZ");
    fs::create_directory(path);
    detail::setTimeZoneFiles({path / "localtime", path / "timezone", zoneFolder});
  }
  ~SystemFolder() {
    detail::setTimeZoneFiles({});
    unsetenv("TZ");
    fs::remove_all(path);
  }
  const fs::path path;
};

constexpr double january2020 = 1577836800, july2020 = 1593561600, july2050 = 2540246400;

}  // namespace

TEST(NSTimeZone, KnowsNamesAbbreviationsAndOffsets) {
  const std::tuple<NSString, const char*, const char*, const char*> names[] = {
      {"Europe/Berlin", "+0100 CET", "+0200 CEST*", "+0200 CEST*"},
      {"America/New_York", "-0500 EST", "-0400 EDT*", "-0400 EDT*"},
      {"Asia/Kolkata", "+0530 IST", "+0530 IST", "+0530 IST"},
      {"America/St_Johns", "-0330 NST", "-0230 NDT*", "-0230 NDT*"},
      {"Australia/Lord_Howe", "+1100 +11*", "+1030 +1030", "+1030 +1030"},
      // Winter is written as a negative daylight-saving time, and still summer is the one.
      {"Europe/Dublin", "+0000 GMT", "+0100 IST*", "+0100 IST*"},
      {"Africa/Casablanca", "+0100 +01*", "+0100 +01*", "+0100 +01*"},
      {"UTC", "+0000 UTC", "+0000 UTC", "+0000 UTC"},
      {"GMT-3", "-0300 GMT-3", "-0300 GMT-3", "-0300 GMT-3"},
      {"GMT+05:45", "+0545 GMT+5:45", "+0545 GMT+5:45", "+0545 GMT+5:45"}};
  for (const auto& [name, winter, summer, future] : names) {
    const Ref<NSTimeZone> zone = NSTimeZone::timeZoneWithName(name);
    ASSERT_TRUE(zone) << name;
    EXPECT_EQ(timeOf(*zone, january2020), winter) << name;
    EXPECT_EQ(timeOf(*zone, july2020), summer) << name;
    EXPECT_EQ(timeOf(*zone, july2050), future) << name;
    for (const double end : {-1e300, 1e300, double{INFINITY}, double{NAN}}) timeOf(*zone, end);
  }
  for (const char* name : {"", "Mars/Olympus", "europe/berlin", "/etc/localtime", "../etc/passwd",
                           "America", "GMT+25:00", "GMT+5:7", "tzdata.zi", "right/Europe/Berlin"})
    EXPECT_EQ(nameOf(NSTimeZone::timeZoneWithName(name)), "nil") << name;
  EXPECT_FALSE(NSTimeZone::timeZoneWithName(nullptr) || NSTimeZone::timeZoneWithName("Zürich") ||
               NSTimeZone::timeZoneWithAbbreviation(nullptr) ||
               NSTimeZone::timeZoneWithAbbreviation("XYZ"));

  EXPECT_EQ(nameOf(NSTimeZone::timeZoneWithAbbreviation("PDT")), "America/Los_Angeles");
  EXPECT_EQ(nameOf(NSTimeZone::timeZoneWithAbbreviation("GMT")), "GMT");
  EXPECT_EQ(nameOf(NSTimeZone::timeZoneWithAbbreviation("GMT+2")), "GMT+0200");
  const std::pair<std::int64_t, const char*> offsets[] = {{0, "GMT"},           {3600, "GMT+0100"},
                                                          {-34200, "GMT-0930"}, {64800, "GMT+1800"},
                                                          {64801, "nil"},       {INT64_MIN, "nil"}};
  for (const auto& [seconds, name] : offsets)
    EXPECT_EQ(nameOf(NSTimeZone::timeZoneForSecondsFromGMT(seconds)), name);
  EXPECT_TRUE(NSTimeZone::knownTimeZoneNames().containsObject("Asia/Tokyo"_ns));
}

TEST(NSTimeZone, SystemFilesAndICUAgreeWhereTheRulesDidNotChange) {
  const auto system = detail::TimeZoneDatabase(zoneFolder);
  const auto icuOnly = detail::TimeZoneDatabase("/nonexistent");
  EXPECT_GT(icuOnly.names().size(), 400u);
  for (const char* name : {"Europe/Paris", "Europe/Dublin", "America/Los_Angeles", "Asia/Tehran",
                           "Australia/Sydney", "America/Sao_Paulo", "Asia/Pyongyang"}) {
    const Ref<NSTimeZone> kept[] = {system.zoneNamed(name), icuOnly.zoneNamed(name)};
    const icu::BasicTimeZone* const zones[] = {
        dynamic_cast<const icu::BasicTimeZone*>(kept[0]->implementation().zone.get()),
        dynamic_cast<const icu::BasicTimeZone*>(kept[1]->implementation().zone.get())};
    ASSERT_TRUE(dynamic_cast<const detail::RuleTimeZone*>(zones[0]) &&
                !dynamic_cast<const detail::RuleTimeZone*>(zones[1]));
    // Every change from 2000 to 2040 with the hours around it, in UTC and in local time.
    icu::TimeZoneTransition ours, theirs;
    for (double moment = 946684800e3;
         zones[1]->getNextTransition(moment, false, theirs) && theirs.getTime() < 2208988800e3;
         moment = theirs.getTime()) {
      ASSERT_TRUE(zones[0]->getNextTransition(moment, false, ours));
      ASSERT_EQ(ours.getTime(), theirs.getTime()) << name;
      ASSERT_TRUE(zones[0]->getPreviousTransition(theirs.getTime(), true, ours));
      ASSERT_EQ(ours.getTime(), theirs.getTime()) << name;
      for (double distance = -3 * 3600e3; distance <= 3 * 3600e3; distance += 900e3) {
        for (const auto option : {UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_LATTER,
                                  UCAL_TZ_LOCAL_STANDARD_LATTER, UCAL_TZ_LOCAL_DAYLIGHT_FORMER}) {
          std::int32_t offsets[2][4] = {};
          UErrorCode status = U_ZERO_ERROR;
          const double at = theirs.getTime() + distance;
          for (int i : {0, 1}) {
            zones[i]->getOffset(at, false, offsets[i][0], offsets[i][1], status);
            zones[i]->getOffsetFromLocal(at, option, option, offsets[i][2], offsets[i][3], status);
          }
          ASSERT_TRUE(std::ranges::equal(offsets[0], offsets[1]))
              << name << " at " << at << ", option " << option;
        }
      }
    }
  }
}

TEST(NSTimeZone, MalformedFilesAreRefusedOrHarmless) {
  const std::string file = contentOf(fs::path(zoneFolder) / "Europe/Berlin");
  ASSERT_TRUE(detail::timeZoneRulesFromFile(file));
  for (std::size_t size = 0; size < file.size(); ++size)
    EXPECT_FALSE(detail::timeZoneRulesFromFile(file.substr(0, size))) << size;
  std::size_t accepted = 0;
  for (std::size_t place = 0; place < file.size(); ++place) {
    std::string changed = file;
    changed[place] = static_cast<char>(changed[place] ^ 0x81);
    const auto rules = detail::timeZoneRulesFromFile(changed);
    if (!rules) continue;
    ++accepted;
    for (const std::int64_t moment : {-1'000'000'000'000'000l, 0l, 1'000'000'000'000'000l}) {
      EXPECT_LT(std::abs(rules->typeAt(moment).offset()), 200'000);
      rules->typeAtLocalTime(moment, {}, {});
      rules->nextChange(moment);
      rules->previousChange(moment);
    }
  }
  EXPECT_LT(accepted, file.size());
}

TEST(NSTimeZone, ReadsRulesInTheFormOfPOSIX) {
  const std::pair<const char*, const char*> rows[] = {
      {"UTC0", "+0000 UTC, +0000 UTC"},
      {"<+0330>-3:30", "+0330 +0330, +0330 +0330"},
      {"EST5EDT", "-0500 EST, -0400 EDT*"},
      {"CET-1CEST,M3.5.0,M10.5.0/3", "+0100 CET, +0200 CEST*"},
      {"NZST-12NZDT,M9.5.0,M4.1.0/3", "+1300 NZDT*, +1200 NZST"},
      {"IST-1GMT0,M10.5.0,M3.5.0/1", "+0000 GMT, +0100 IST*"},
      {"XXX3YYY2,J32,J60", "-0300 XXX, -0300 XXX"},
      {"AAA0BBB,0/-25,300/167", "+0100 BBB*, +0100 BBB*"},
      // Daylight-saving time all year long.
      {"EST5EDT,0/0,J365/25", "-0400 EDT*, -0400 EDT*"},
      {"AB0", ""},
      {"ABC", ""},
      {"ABC25", ""},
      {"ABC0DEF,M13.1.0,M1.1.0", ""},
      {"ABC0DEF,M1.0.0,M1.1.0", ""},
      {"ABC0DEF,J0,J1", ""},
      {"ABC0DEF,366,1", ""},
      {"ABC0DEF,1", ""},
      {"ABC0DEF,1,2x", ""},
      {"<A>0", ""},
      {"<ABC0", ""},
      {"ABC0:60", ""},
      {"ABC99999999999", ""},
      {"", ""}};
  for (const auto& [text, expected] : rows) {
    std::string times;
    if (const auto rules = detail::yearlyRulesFromText(text)) {
      const Ref<NSTimeZone> zone = detail::TimeZoneDatabase::zoneWithRules(
          "x", detail::TimeZoneRules({rules->standard}, {}, rules));
      times = timeOf(*zone, january2020) + ", " + timeOf(*zone, july2020);
    }
    EXPECT_EQ(times, expected) << text;
  }
}

TEST(NSTimeZone, FindsTheZoneOfTheSystem) {
  const SystemFolder folder;
  const fs::path localTime = folder.path / "localtime";
  const fs::path berlin = fs::path(zoneFolder) / "Europe/Berlin";
  const auto name = [] {
    NSTimeZone::resetSystemTimeZone();
    return nameOf(NSTimeZone::systemTimeZone());
  };
  EXPECT_EQ(name(), "GMT");
  write(folder.path / "timezone", "Asia/Tokyo\n");
  EXPECT_EQ(name(), "Asia/Tokyo");
  fs::create_symlink(fs::path(zoneFolder) / "America/Lima", localTime);
  EXPECT_EQ(name(), "America/Lima");
  fs::remove(localTime);
  fs::create_symlink("other", localTime);
  fs::create_symlink("../x/zoneinfo/posix/Europe/Rome", folder.path / "other");
  EXPECT_EQ(name(), "Europe/Rome");
  fs::remove(localTime);
  fs::create_symlink("localtime", localTime);  // leads to itself
  EXPECT_EQ(name(), "Asia/Tokyo");
  fs::remove(localTime);
  write(localTime, contentOf(berlin));
  EXPECT_EQ(timeOf(*NSTimeZone::timeZoneWithName(NSString(name())), july2020), "+0200 CEST*");
  write(folder.path / "timezone", "Europe/Berlin");
  EXPECT_EQ(name(), "Europe/Berlin");
  std::string unknown = contentOf(berlin);
  unknown.replace(unknown.rfind("CET-1CEST"), 9, "CET-1XEST");
  write(localTime, unknown);
  EXPECT_EQ(name(), "localtime");
  EXPECT_EQ(timeOf(*NSTimeZone::systemTimeZone(), july2050), "+0200 XEST*");
  write(localTime, "TZif");
  EXPECT_EQ(name(), "Europe/Berlin");

  const std::pair<std::string, const char*> variables[] = {
      {"Africa/Cairo", "Africa/Cairo"},
      {":Asia/Seoul", "Asia/Seoul"},
      {"", "GMT"},
      {":", "GMT"},
      {"No/Where", "GMT"},
      {"XYZ-3", "XYZ-3"},
      {zoneFolder + std::string("/Asia/Dubai"), "Asia/Dubai"},
      {"/nonexistent", "GMT"}};
  for (const auto& [value, expected] : variables) {
    setenv("TZ", value.c_str(), 1);
    EXPECT_EQ(name(), expected) << value;
  }
}

TEST(NSTimeZone, ChangesOfTheSystemArePostedAfterTheZoneIsNew) {
  const SystemFolder folder;
  const fs::path localTime = folder.path / "localtime", draft = folder.path / "draft";
  const auto target = [](const char* name) { return fs::path(zoneFolder) / name; };
  fs::create_symlink(target("Asia/Tokyo"), localTime);
  EXPECT_EQ(nameOf(NSTimeZone::systemTimeZone()), "Asia/Tokyo");

  detail::Lock lock;
  std::vector<std::string> posted;
  std::vector<std::thread::id> threads;
  const Ref<NSObject> token = NSNotificationCenter::defaultCenter()->addObserverForName(
      NSSystemTimeZoneDidChangeNotification, nullptr, nullptr, [&](const auto&) {
        const std::string now =
            nameOf(NSTimeZone::systemTimeZone()) + " " + nameOf(NSTimeZone::defaultTimeZone());
        const detail::LockGuard guard(lock);
        posted.push_back(now);
        threads.push_back(std::this_thread::get_id());
      });
  const auto expectPosted = [&](const char* zones) {
    waitUntil(
        [&] {
          const detail::LockGuard guard(lock);
          return !posted.empty();
        },
        "the change of the zone is posted");
    const detail::LockGuard guard(lock);
    EXPECT_EQ(std::exchange(posted, {}), std::vector<std::string>{zones});
  };

  fs::create_symlink(target("Europe/Rome"), draft);
  fs::rename(draft, localTime);
  expectPosted("Europe/Rome Europe/Rome");
  // Neither a removal, nor another file, nor half a file, nor the same zone again is a change.
  fs::remove(localTime);
  write(draft, "x");
  write(localTime, "TZif2");
  fs::remove(localTime);
  fs::create_symlink(target("Europe/Rome"), localTime);
  fs::remove(localTime);
  fs::create_symlink(target("America/Lima"), localTime);
  expectPosted("America/Lima America/Lima");
  NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName("UTC"));
  fs::remove(localTime);
  write(folder.path / "timezone", "Asia/Kathmandu");
  write(localTime, contentOf(target("Asia/Kathmandu")));
  expectPosted("Asia/Kathmandu UTC");
  NSTimeZone::setDefaultTimeZone(nullptr);
  EXPECT_EQ(std::ranges::count(threads, std::this_thread::get_id()), 0);

  // The host reports what the library cannot notice.
  setenv("TZ", "Africa/Cairo", 1);
  EXPECT_EQ(nameOf(NSTimeZone::systemTimeZone()), "Asia/Kathmandu");
  NSTimeZone::systemTimeZoneDidChange();
  expectPosted("Africa/Cairo Africa/Cairo");
  EXPECT_EQ(threads.back(), std::this_thread::get_id());
  NSNotificationCenter::defaultCenter()->removeObserver(token);
}

}  // namespace zeb::test
