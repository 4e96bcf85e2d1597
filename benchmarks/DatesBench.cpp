// Dates as text, against ICU's formatters called directly.

#include <ZEBPlatform/Text.h>
#include <ZEBUtilities/LocalizedDates.h>
#include <unicode/smpdtfmt.h>

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "Bench.h"

namespace zeb::bench {

namespace {

/// Dates of some months, as in a feed, so that no value stays in a cache.
std::vector<NSDate> makeDates() {
  std::vector<NSDate> dates;
  for (int i = 0; i < 1000; ++i)
    dates.push_back(NSDate::dateWithTimeIntervalSince1970(1.6e9 + 12'345.25 * i));
  return dates;
}

double milliseconds(const NSDate& date) { return date.timeIntervalSince1970() * 1000; }

bool isSame(const NSString& ours, const icu::UnicodeString& theirs) {
  return ours == NSString(std::u16string_view(theirs.getBuffer(),
                                              static_cast<std::size_t>(theirs.length())));
}

/// Both sides write all dates; they must write the same.
template <class Theirs>
void compare(Report& report, const char* name, const char* peer, NSString (*ours)(const NSDate&),
             const Theirs& theirs) {
  const std::vector<NSDate> dates = makeDates();
  for (const NSDate& date : dates) require(isSame(ours(date), theirs(date)), "different texts");
  const Seconds seconds = measureInTurns(
      [&] {
        for (const NSDate& date : dates) consume(ours(date));
      },
      [&] {
        for (const NSDate& date : dates) consume(theirs(date));
      });
  report.add(nanosecondsEach(name, peer, seconds, dates.size()));
}

const Case format("date.format", [](Report& report) {
  NSLocale::setCurrentLocale(NSLocale::localeWithLocaleIdentifier("en_US"));
  NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName("Europe/Berlin"));
  zeb_currentLocaleDidChange();
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone("Europe/Berlin"));
  const auto against = [&](const char* name, NSString (*ours)(const NSDate&),
                           icu::DateFormat::EStyle dateStyle, icu::DateFormat::EStyle timeStyle) {
    const std::unique_ptr<icu::DateFormat> formatter(
        icu::DateFormat::createDateTimeInstance(dateStyle, timeStyle, icu::Locale("en_US")));
    formatter->setTimeZone(*zone);
    compare(report, name, "ICU, formatter kept", ours, [&](const NSDate& date) {
      icu::UnicodeString text;
      return formatter->format(milliseconds(date), text);
    });
  };
  using icu::DateFormat;
  against("zeb_shortTimeString", zeb_shortTimeString, DateFormat::kNone, DateFormat::kShort);
  against("zeb_mediumDateString", zeb_mediumDateString, DateFormat::kShort, DateFormat::kShort);
  against("zeb_longDateStringWithTime", zeb_longDateStringWithTime, DateFormat::kLong,
          DateFormat::kShort);
  NSLocale::setCurrentLocale(nullptr);
  NSTimeZone::setDefaultTimeZone(nullptr);
  zeb_currentLocaleDidChange();
});

const Case wire("date.wire", [](Report& report) {
  const auto against = [&](const char* name, NSString (*ours)(const NSDate&), const char* pattern,
                           const char* locale) {
    compare(report, name, "ICU, formatter per call", ours, [&](const NSDate& date) {
      UErrorCode status = U_ZERO_ERROR;
      icu::SimpleDateFormat formatter(pattern, icu::Locale(locale), status);
      formatter.adoptTimeZone(icu::TimeZone::createTimeZone("UTC"));
      icu::UnicodeString text;
      return formatter.format(milliseconds(date), text);
    });
  };
  against("zeb_APIUTCDateStringWithTime", zeb_APIUTCDateStringWithTime,
          "EEE MMM dd yyyy HH:mm:ss Z", "en_US_POSIX");
  against("…AndYearAtEnd", zeb_APIUTCDateStringWithTimeAndYearAtEnd, "EEE MMM dd HH:mm:ss Z yyyy",
          "en_US_POSIX");
  against("zeb_RFC1123DateStringWithTime", zeb_RFC1123DateStringWithTime,
          "EEE',' dd MMM yyyy HH':'mm':'ss 'GMT'", "en_US");
});

}  // namespace

}  // namespace zeb::bench
