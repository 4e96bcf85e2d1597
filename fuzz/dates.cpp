// The first byte chooses what the rest is: a compiled time-zone file, rules in the form of POSIX, a
// pattern or template with a date, or names of zones, locales and calendars with a date.

#include <ZEBPlatform/Text.h>
#include <ZEBPlatform/Text/TimeZoneRulesPrivate.h>
#include <ZEBUtilities/Dates.h>
#include <ZEBUtilities/LocalizedDates.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

using namespace zeb;

namespace {

/// ICU writes as many digits as a pattern has letters, so that long patterns only take long.
constexpr std::size_t maxPatternLength = 64;
constexpr std::int64_t maxOffset = 2 * 93'600;

void require(bool holds) {
  if (!holds) std::abort();
}

/// Takes the date from the end of the input, as the bytes of a double.
NSDate takeDate(std::string_view& input) {
  double seconds = 0;
  if (input.size() < sizeof seconds) return NSDate::dateWithTimeIntervalSince1970(0);
  std::memcpy(&seconds, input.data() + input.size() - sizeof seconds, sizeof seconds);
  input.remove_suffix(sizeof seconds);
  return NSDate::dateWithTimeIntervalSince1970(seconds);
}

void checkRules(const detail::TimeZoneRules& rules) {
  for (std::int64_t moment :
       {INT64_C(-1'000'000'000'000'000), INT64_C(-5'000'000'000), INT64_C(0),
        INT64_C(1'700'000'000), INT64_C(4'000'000'000), INT64_C(1'000'000'000'000'000)}) {
    require(std::abs(rules.typeAt(moment).offset()) <= maxOffset);
    for (int option = 0; option < 6; ++option) {
      const detail::TimeZoneRules::Ambiguity ambiguity{
          static_cast<detail::TimeZoneRules::Ambiguity::Preference>(option % 3), option > 2};
      rules.typeAtLocalTime(moment, ambiguity, ambiguity);
    }
    for (int i = 0; i < 8; ++i) {
      const std::optional<std::int64_t> next = rules.nextChange(moment);
      const std::optional<std::int64_t> previous = rules.previousChange(moment);
      require(!previous || *previous <= moment);
      if (!next) break;
      require(*next > moment);
      moment = *next;
    }
  }
}

void checkPattern(std::string_view input) {
  const NSDate date = takeDate(input);
  const NSString text(input.substr(0, maxPatternLength));
  const Ref<NSDateFormatter> formatter = makeRef<NSDateFormatter>();
  for (const NSString& pattern :
       {text, NSDateFormatter::dateFormatFromTemplate(text, 0, nullptr)}) {
    formatter->setDateFormat(pattern);
    formatter->setLenient(!formatter->isLenient());
    formatter->dateFromString(formatter->stringFromDate(date));
    formatter->dateFromString(text);
  }
}

void checkNames(std::string_view input) {
  const NSDate date = takeDate(input);
  const NSString name(input);
  const Ref<NSTimeZone> zone = NSTimeZone::timeZoneWithName(name);
  if (zone) {
    require(zone->name() == name || NSTimeZone::timeZoneWithName(zone->name()));
    zeb_utcOffsetOfDate(date, zone);
  }
  NSTimeZone::timeZoneWithAbbreviation(name);
  NSTimeZone::setDefaultTimeZone(zone);
  NSLocale::setCurrentLocale(NSLocale::localeWithLocaleIdentifier(name));
  zeb_currentLocaleDidChange();
  for (const auto call :
       {zeb_longDateStringWithTime, zeb_shortRelativeDateStringWithTime,
        zeb_weekdayDateStringWithTime, zeb_APIUTCDateStringWithTime, zeb_RFC1123DateStringWithTime})
    call(date);
  zeb_dateWithLongDateString(zeb_longDateString(date));
  const NSDate begin = zeb_beginningOfDay(date);
  zeb_isEqualToDateIgnoringTime(begin, date);
  require(zeb_dateWithYears(date, INT64_MIN).isNil());
  zeb_epochMilliseconds(date);
  if (const Ref<NSCalendar> calendar = NSCalendar::calendarWithIdentifier(name))
    calendar->startOfDayForDate(date);
  NSTimeZone::setDefaultTimeZone(nullptr);
  NSLocale::setCurrentLocale(nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view input(reinterpret_cast<const char*>(data) + 1, size - 1);
  switch (data[0] % 4) {
    case 0:
      if (const auto rules = detail::timeZoneRulesFromFile(input)) checkRules(*rules);
      break;
    case 1:
      if (const auto rules = detail::yearlyRulesFromText(input))
        checkRules(detail::TimeZoneRules({rules->standard}, {}, rules));
      break;
    case 2:
      checkPattern(input);
      break;
    default:
      checkNames(input);
  }
  return 0;
}
