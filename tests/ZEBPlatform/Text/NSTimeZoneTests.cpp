#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBPlatform/Text/RuleTimeZonePrivate.h>
#include <ZEBPlatform/Text/SystemTimeZonePrivate.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "Support/DateSettings.h"
#include "Support/Support.h"

namespace zeb::test {

namespace {

namespace fs = std::filesystem;

const fs::path zoneFolder = "/usr/share/zoneinfo";

/// "+HHMM abbreviation" on the first days of January and July 2020 and July 2050, each with "*" in
/// daylight-saving time.
std::string timesOf(const Ref<NSTimeZone>& zone) {
  std::string times;
  for (const double seconds : {1577836800.0, 1593561600.0, 2540246400.0}) {
    const NSDate date = since1970(seconds);
    const std::int64_t minutes = zone->secondsFromGMT(date) / 60;
    times +=
        formattedText(" %+05lld %@%s", {minutes / 60 * 100 + minutes % 60, zone->abbreviation(date),
                                        zone->isDaylightSavingTime(date) ? "*" : ""});
  }
  return times;
}

std::string nameOf(const Ref<NSTimeZone>& zone) { return zone ? zone->name().utf8() : "nil"; }

std::string contentOf(const fs::path& file) {
  std::stringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  return content.str();
}

void write(const fs::path& file, const std::string& content) {
  std::ofstream(file, std::ios::binary) << content;
}

void link(const fs::path& file, const fs::path& target) {
  fs::remove(file);
  fs::create_symlink(target, file);
}

/// A folder in place of /etc, and no TZ in the environment, for as long as it lives.
struct SystemFolder {
  SystemFolder() : path(fs::temp_directory_path() / ("zeb-zones-" + std::to_string(getpid()))) {
    unsetenv("TZ");
    fs::create_directory(path);
    detail::setTimeZoneFiles({localTime(), path / "timezone", zoneFolder});
  }
  ~SystemFolder() {
    detail::setTimeZoneFiles({});
    unsetenv("TZ");
    fs::remove_all(path);
  }
  fs::path localTime() const { return path / "localtime"; }

  const fs::path path;
};

}  // namespace

TEST(NSTimeZone, KnowsNamesAbbreviationsAndOffsets) {
  const std::pair<const char*, const char*> zones[] = {
      {"Europe/Berlin", " +0100 CET +0200 CEST* +0200 CEST*"},
      {"Australia/Lord_Howe", " +1100 +11* +1030 +1030 +1030 +1030"},
      // Their files call winter and Ramadan daylight-saving time, and here summer still is it.
      {"Europe/Dublin", " +0000 GMT +0100 IST* +0100 IST*"},
      {"Africa/Casablanca", " +0100 +01* +0100 +01* +0100 +01*"},
      {"GMT-3", " -0300 GMT-3 -0300 GMT-3 -0300 GMT-3"},
      {"GMT+05:45", " +0545 GMT+5:45 +0545 GMT+5:45 +0545 GMT+5:45"}};
  for (const auto& [name, times] : zones) {
    const Ref<NSTimeZone> zone = NSTimeZone::timeZoneWithName(name);
    EXPECT_EQ(zone ? timesOf(zone) : "nil", times) << name;
    for (const double end : {-1e300, 1e300, double{INFINITY}, double{NAN}})
      EXPECT_LT(std::abs(zone->secondsFromGMT(since1970(end))), 86400);
  }
  const auto abbreviated = NSTimeZone::timeZoneWithAbbreviation;
  for (const char* name : {"", "Mars/Olympus", "europe/berlin", "/etc/localtime", "../etc/passwd",
                           "America", "GMT+25:00", "GMT+5:7", "Zürich"})
    EXPECT_FALSE(NSTimeZone::timeZoneWithName(name) || abbreviated(name)) << name;
  EXPECT_FALSE(NSTimeZone::timeZoneWithName(nullptr) || abbreviated(nullptr));
  EXPECT_EQ(nameOf(abbreviated("PDT")) + nameOf(abbreviated("GMT+2")),
            "America/Los_AngelesGMT+0200");
  EXPECT_EQ(nameOf(NSTimeZone::timeZoneForSecondsFromGMT(-34200)), "GMT-0930");
  EXPECT_FALSE(NSTimeZone::timeZoneForSecondsFromGMT(64801));
  EXPECT_TRUE(NSTimeZone::knownTimeZoneNames().containsObject("Asia/Tokyo"_ns));
}

TEST(NSTimeZone, SystemFilesAndICUAgreeWhereTheRulesDidNotChange) {
  for (const char* name : {"Europe/Paris", "Europe/Dublin", "America/Los_Angeles", "Asia/Tehran",
                           "Australia/Sydney", "America/Sao_Paulo", "Asia/Pyongyang"}) {
    const Ref<NSTimeZone> zones[] = {detail::TimeZoneDatabase(zoneFolder).zoneNamed(name),
                                     detail::TimeZoneDatabase("/nonexistent").zoneNamed(name)};
    const auto zone = [&](int i) {
      return dynamic_cast<const icu::BasicTimeZone*>(zones[i]->implementation().zone.get());
    };
    const auto offsets = [&](int i, double at, UTimeZoneLocalOption option) {
      std::array<std::int32_t, 4> result{};
      UErrorCode status = U_ZERO_ERROR;
      zone(i)->getOffset(at, false, result[0], result[1], status);
      zone(i)->getOffsetFromLocal(at, option, option, result[2], result[3], status);
      return result;
    };
    icu::TimeZoneTransition ours, theirs;
    for (double moment = 946684800e3;
         zone(0)->getNextTransition(moment, false, ours) && ours.getTime() < 2208988800e3;
         moment = ours.getTime()) {
      zone(1)->getNextTransition(moment, false, theirs);
      ASSERT_EQ(ours.getTime(), theirs.getTime()) << name;
      for (double at = moment - 11e6; at < moment + 11e6; at += 900e3)
        for (const auto option : {UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_LATTER,
                                  UCAL_TZ_LOCAL_STANDARD_LATTER, UCAL_TZ_LOCAL_DAYLIGHT_FORMER})
          ASSERT_EQ(offsets(0, at, option), offsets(1, at, option)) << name << " " << at;
    }
  }
}

TEST(NSTimeZone, ReadsRulesInTheFormOfPOSIX) {
  const std::pair<const char*, const char*> rows[] = {
      {"<+0330>-3:30", " +0330 +0330 +0330 +0330 +0330 +0330"},
      {"EST5EDT", " -0500 EST -0400 EDT* -0400 EDT*"},
      {"NZST-12NZDT,M9.5.0,M4.1.0/3", " +1300 NZDT* +1200 NZST +1200 NZST"},
      {"IST-1GMT0,M10.5.0,M3.5.0/1", " +0000 GMT +0100 IST* +0100 IST*"},
      {"QQQ3YYY2,J32,J181", " -0300 QQQ -0300 QQQ -0300 QQQ"},
      {"QQQ3YYY2,J32,181", " -0300 QQQ -0300 QQQ -0200 YYY*"},  // 2020 has a leap day
      {"AAA0BBB,0/-25,300/167", " +0100 BBB* +0100 BBB* +0100 BBB*"},
      {"EST5EDT,0/0,J365/25", " -0400 EDT* -0400 EDT* -0400 EDT*"}};  // all year long
  for (const auto& [text, times] : rows) {
    const auto rules = detail::yearlyRulesFromText(text);
    ASSERT_TRUE(rules) << text;
    EXPECT_EQ(timesOf(detail::TimeZoneDatabase::zoneWithRules(
                  "x", detail::TimeZoneRules({rules->standard}, {}, rules))),
              times)
        << text;
  }
  for (const char* text : {"", "AB0", "ABC", "ABC25", "ABC0:60", "ABC99999999999", "<A>0", "<ABC0",
                           "ABC0DEF,M13.1.0,1", "ABC0DEF,M1.0.0,1", "ABC0DEF,J0,J1",
                           "ABC0DEF,366,1", "ABC0DEF,1", "ABC0DEF,1,2x"})
    EXPECT_FALSE(detail::yearlyRulesFromText(text)) << text;
}

TEST(NSTimeZone, FindsTheZoneOfTheSystem) {
  const SystemFolder folder;
  const auto name = [] {
    NSTimeZone::resetSystemTimeZone();
    return nameOf(NSTimeZone::systemTimeZone());
  };
  EXPECT_EQ(name(), "GMT");
  write(folder.path / "timezone", "Asia/Tokyo\n");
  EXPECT_EQ(name(), "Asia/Tokyo");
  link(folder.path / "other", "../x/zoneinfo/posix/Europe/Rome");
  link(folder.localTime(), "other");
  EXPECT_EQ(name(), "Europe/Rome");
  link(folder.localTime(), "localtime");  // leads to itself
  EXPECT_EQ(name(), "Asia/Tokyo");
  fs::remove(folder.localTime());
  const std::string berlin = contentOf(zoneFolder / "Europe/Berlin");
  std::string unknown = berlin;
  unknown.replace(unknown.rfind("CET-1CEST"), 9, "CET-1XEST");
  write(folder.localTime(), unknown);
  EXPECT_EQ(name(), "localtime");
  EXPECT_EQ(timesOf(NSTimeZone::systemTimeZone()), " +0100 CET +0200 CEST* +0200 XEST*");
  write(folder.localTime(), berlin);
  EXPECT_NE(name(), "localtime");  // it may be another name of the same zone
  write(folder.path / "timezone", "Europe/Berlin");
  EXPECT_EQ(name(), "Europe/Berlin");

  std::string names;
  for (const char* value : {"Africa/Cairo", ":Asia/Seoul", ":", "No/Where", "XYZ-3", "/nonexistent",
                            "/usr/share/zoneinfo/Asia/Dubai"}) {
    setenv("TZ", value, 1);
    names += name() + " ";
  }
  EXPECT_EQ(names, "Africa/Cairo Asia/Seoul GMT GMT XYZ-3 GMT Asia/Dubai ");
  setenv("TZ", "GMT+5", 1);  // behind, as POSIX has it, and unlike the zone of this name
  EXPECT_EQ(name(), "GMT+5");
  EXPECT_EQ(NSTimeZone::systemTimeZone()->secondsFromGMT(), -18'000);
}

TEST(NSTimeZone, ChangesOfTheSystemArePostedAfterTheZoneIsNew) {
  const SystemFolder folder;
  const fs::path draft = folder.path / "draft";
  link(folder.localTime(), zoneFolder / "Asia/Tokyo");
  EXPECT_EQ(nameOf(NSTimeZone::systemTimeZone()), "Asia/Tokyo");

  std::string zones;
  std::atomic<int> posts{0};
  const auto note = [&, main = std::this_thread::get_id()](const Ref<NSNotification>&) {
    zones = nameOf(NSTimeZone::systemTimeZone()) + " " + nameOf(NSTimeZone::defaultTimeZone());
    if (std::this_thread::get_id() == main) zones += " here";
    ++posts;
  };
  const Ref<NSObject> token = NSNotificationCenter::defaultCenter()->addObserverForName(
      NSSystemTimeZoneDidChangeNotification, nullptr, nullptr, note);
  const auto post = [&](int number) {
    waitUntil([&] { return posts == number; }, "the change of the zone is posted once");
    return zones;
  };

  fs::create_symlink(zoneFolder / "Europe/Rome", draft);
  fs::rename(draft, folder.localTime());
  EXPECT_EQ(post(1), "Europe/Rome Europe/Rome");
  // Neither a removal, nor another file, nor half a file, nor the same zone again is a change.
  fs::remove(folder.localTime());
  write(draft, "x");
  write(folder.localTime(), "TZif2");
  link(folder.localTime(), zoneFolder / "Europe/Rome");
  link(folder.localTime(), zoneFolder / "America/Lima");
  EXPECT_EQ(post(2), "America/Lima America/Lima");
  NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName("UTC"));
  fs::remove(folder.localTime());
  write(folder.path / "timezone", "Asia/Kathmandu");
  write(folder.localTime(), contentOf(zoneFolder / "Asia/Kathmandu"));
  EXPECT_EQ(post(3), "Asia/Kathmandu UTC");
  NSTimeZone::setDefaultTimeZone(nullptr);

  setenv("TZ", "Africa/Cairo", 1);  // which only the host can notice
  EXPECT_EQ(nameOf(NSTimeZone::systemTimeZone()), "Asia/Kathmandu");
  NSTimeZone::systemTimeZoneDidChange();
  EXPECT_EQ(post(4), "Africa/Cairo Africa/Cairo here");
  NSNotificationCenter::defaultCenter()->removeObserver(token);
}

}  // namespace zeb::test
