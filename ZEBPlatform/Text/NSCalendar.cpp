#include <ZEBPlatform/Text/ICULocalePrivate.h>
#include <ZEBPlatform/Text/NSCalendar.h>
#include <ZEBPlatform/Text/TimeZoneDatabasePrivate.h>
#include <unicode/calendar.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace zeb {

const char* const NSCalendarIdentifierGregorian = "gregorian";
const char* const NSCalendarIdentifierBuddhist = "buddhist";
const char* const NSCalendarIdentifierHebrew = "hebrew";
const char* const NSCalendarIdentifierISO8601 = "iso8601";
const char* const NSCalendarIdentifierJapanese = "japanese";

struct NSCalendar::Implementation {
  std::unique_ptr<icu::Calendar> calendar;
};

namespace {

constexpr double millisecondsPerSecond = 1000;
constexpr double nanosecondsPerSecond = 1e9;
constexpr double secondsPerDay = 86400;

constexpr std::string_view identifiers[] = {
    "buddhist", "chinese",       "coptic",           "ethiopic", "gregorian", "hebrew",  "indian",
    "islamic",  "islamic-civil", "islamic-umalqura", "iso8601",  "japanese",  "persian", "roc"};

/// A part of a date, and how ICU counts it.
struct Field {
  NSCalendarUnit unit;
  std::int64_t NSDateComponents::* part;
  UCalendarDateFields icuField;
  std::int32_t distance = 0;  ///< what we count more than ICU
  double days = 0;            ///< about how long it is, if it determines a date
};

constexpr Field fields[] = {
    {NSCalendarUnitEra, &NSDateComponents::era, UCAL_ERA},
    {NSCalendarUnitYear, &NSDateComponents::year, UCAL_YEAR, 0, 365.25},
    {NSCalendarUnitMonth, &NSDateComponents::month, UCAL_MONTH, 1, 30.5},
    {NSCalendarUnitDay, &NSDateComponents::day, UCAL_DATE, 0, 1},
    {NSCalendarUnitHour, &NSDateComponents::hour, UCAL_HOUR_OF_DAY, 0, 1 / 24.0},
    {NSCalendarUnitMinute, &NSDateComponents::minute, UCAL_MINUTE, 0, 1 / 1440.0},
    {NSCalendarUnitSecond, &NSDateComponents::second, UCAL_SECOND, 0, 1 / secondsPerDay},
    // These parts do not determine a date.
    {NSCalendarUnitWeekday, &NSDateComponents::weekday, UCAL_DAY_OF_WEEK},
    {NSCalendarUnitWeekOfYear, &NSDateComponents::weekOfYear, UCAL_WEEK_OF_YEAR},
    {NSCalendarUnitYearForWeekOfYear, &NSDateComponents::yearForWeekOfYear, UCAL_YEAR_WOY},
};
constexpr std::span<const Field> determiningFields = std::span(fields).first(7);

/// The parts whose amounts depend on the calendar, in the order in which they are added.
constexpr Field addedFields[] = {
    {NSCalendarUnitYear, &NSDateComponents::year, UCAL_YEAR, 0, 365.25},
    {NSCalendarUnitMonth, &NSDateComponents::month, UCAL_MONTH, 0, 30.5},
    {NSCalendarUnitWeekOfYear, &NSDateComponents::weekOfYear, UCAL_WEEK_OF_YEAR, 0, 7},
    {NSCalendarUnitDay, &NSDateComponents::day, UCAL_DATE, 0, 1},
};

struct Duration {
  std::int64_t NSDateComponents::* part;
  double seconds;
};

constexpr Duration durations[] = {
    {&NSDateComponents::hour, 3600},
    {&NSDateComponents::minute, 60},
    {&NSDateComponents::second, 1},
    {&NSDateComponents::nanosecond, 1 / nanosecondsPerSecond},
};

constexpr std::size_t maxGranularityFields = 4;

/// The ICU fields that are equal if two dates are the same down to a unit.
struct Granularity {
  NSCalendarUnit unit;
  UCalendarDateFields fields[maxGranularityFields];
  std::size_t count;
};

// The Julian day is the number of the local day in every calendar.
constexpr Granularity granularities[] = {
    {NSCalendarUnitEra, {UCAL_ERA}, 1},
    {NSCalendarUnitYear, {UCAL_ERA, UCAL_YEAR}, 2},
    {NSCalendarUnitMonth, {UCAL_ERA, UCAL_YEAR, UCAL_MONTH, UCAL_IS_LEAP_MONTH}, 4},
    {NSCalendarUnitDay, {UCAL_JULIAN_DAY}, 1},
    {NSCalendarUnitHour, {UCAL_JULIAN_DAY, UCAL_HOUR_OF_DAY}, 2},
    {NSCalendarUnitMinute, {UCAL_JULIAN_DAY, UCAL_HOUR_OF_DAY, UCAL_MINUTE}, 3},
    {NSCalendarUnitSecond, {UCAL_JULIAN_DAY, UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND}, 4},
    {NSCalendarUnitWeekOfYear, {UCAL_YEAR_WOY, UCAL_WEEK_OF_YEAR}, 2},
};

bool isUndefined(std::int64_t value) noexcept { return value == NSDateComponentUndefined; }

/// The value in ICU's type, if it fits with room for the distance.
std::optional<std::int32_t> icuNumber(std::int64_t value, std::int32_t distance) noexcept {
  using Limits = std::numeric_limits<std::int32_t>;
  if (value <= (Limits::min)() || value > (Limits::max)()) return std::nullopt;
  return static_cast<std::int32_t>(value - distance);
}

/// Whether a moment about this many days from 1970 or from the year 1 is surely one that ICU can
/// count to. Beyond its range of 2^31 days, its numbers overflow.
bool isInRange(double days) noexcept {
  constexpr double maxDays = 2.12e9;
  return std::abs(days) < maxDays;
}

/// Whole milliseconds since 1970, and what is left.
struct Moment {
  double milliseconds;
  double rest;
};

std::optional<Moment> momentOf(const NSDate& date) noexcept {
  const double milliseconds = date.timeIntervalSince1970() * millisecondsPerSecond;
  if (date.isNil() || std::isnan(milliseconds)) return std::nullopt;
  const double whole = std::floor(milliseconds);
  return Moment{whole, std::isfinite(whole) ? milliseconds - whole : 0};
}

NSDate dateOf(double milliseconds) noexcept {
  return NSDate::dateWithTimeIntervalSince1970(milliseconds / millisecondsPerSecond);
}

/// Whether ICU could take over the moment.
bool setMoment(icu::Calendar& calendar, const std::optional<Moment>& moment) {
  UErrorCode status = U_ZERO_ERROR;
  if (moment) calendar.setTime(moment->milliseconds, status);
  return moment && U_SUCCESS(status);
}

/// Nil if the calendar's fields describe no date.
NSDate dateOfCalendar(icu::Calendar& calendar, double additionalMilliseconds) {
  UErrorCode status = U_ZERO_ERROR;
  const double milliseconds = calendar.getTime(status);
  return U_FAILURE(status) ? NSDate() : dateOf(milliseconds + additionalMilliseconds);
}

std::unique_ptr<icu::Calendar> newCalendar(const std::string& identifier, const NSLocale& locale,
                                           const NSTimeZone& timeZone) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Locale icuLocale =
      detail::icuLocale(locale, identifier.empty() ? NSString() : NSString(identifier));
  std::unique_ptr<icu::Calendar> calendar(
      icu::Calendar::createInstance(*timeZone.implementation().zone, icuLocale, status));
  if (U_FAILURE(status)) return nullptr;
  calendar->setSkippedWallTimeOption(UCAL_WALLTIME_NEXT_VALID);
  calendar->setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
  return calendar;
}

}  // namespace

NSCalendar::NSCalendar(std::string icuIdentifier, Following following)
    : following_(following), icuIdentifier_(std::move(icuIdentifier)) {
  setLocale(nullptr);
  setTimeZone(nullptr);
}

NSCalendar::~NSCalendar() = default;

Ref<NSCalendar> NSCalendar::calendarWithIdentifier(const NSString& identifier) {
  const std::string name = identifier.utf8();
  if (std::ranges::find(identifiers, name) == std::end(identifiers)) return nullptr;
  return makeRef<NSCalendar>(name, Following::fixed);
}

Ref<NSCalendar> NSCalendar::currentCalendar() {
  return makeRef<NSCalendar>(std::string(), Following::fixed);
}

Ref<NSCalendar> NSCalendar::autoupdatingCurrentCalendar() {
  return makeRef<NSCalendar>(std::string(), Following::currentSettings);
}

NSCalendar::Implementation* NSCalendar::current() const {
  if (following_ == Following::currentSettings) {
    Ref<NSLocale> locale = NSLocale::currentLocale();
    Ref<NSTimeZone> timeZone = NSTimeZone::defaultTimeZone();
    if (timeZone != timeZone_ || std::string_view(locale->icuName()) != locale_->icuName()) {
      locale_ = std::move(locale);
      timeZone_ = std::move(timeZone);
      implementation_.reset();
    }
  }
  if (!implementation_) {
    implementation_ = std::make_unique<Implementation>(
        Implementation{newCalendar(icuIdentifier_, *locale_, *timeZone_)});
  }
  return implementation_->calendar ? implementation_.get() : nullptr;
}

NSString NSCalendar::calendarIdentifier() const {
  if (!icuIdentifier_.empty()) return NSString(icuIdentifier_);
  const Implementation* const used = current();
  return used ? NSString(used->calendar->getType()) : NSString(NSCalendarIdentifierGregorian);
}

Ref<NSLocale> NSCalendar::locale() const {
  return following_ == Following::currentSettings ? NSLocale::currentLocale() : locale_;
}

Ref<NSTimeZone> NSCalendar::timeZone() const {
  return following_ == Following::currentSettings ? NSTimeZone::defaultTimeZone() : timeZone_;
}

void NSCalendar::setLocale(const Ref<NSLocale>& locale) {
  locale_ = locale ? locale : NSLocale::currentLocale();
  implementation_.reset();
}

void NSCalendar::setTimeZone(const Ref<NSTimeZone>& timeZone) {
  timeZone_ = timeZone ? timeZone : NSTimeZone::defaultTimeZone();
  implementation_.reset();
}

Ref<NSDateComponents> NSCalendar::components(NSCalendarUnit units, const NSDate& date) const {
  Implementation* const used = current();
  const std::optional<Moment> moment = momentOf(date);
  if (!used || !setMoment(*used->calendar, moment)) return nullptr;
  Ref<NSDateComponents> result = makeRef<NSDateComponents>();
  UErrorCode status = U_ZERO_ERROR;
  for (const Field& field : fields)
    if (units & field.unit)
      (*result).*field.part = used->calendar->get(field.icuField, status) + field.distance;
  if (units & NSCalendarUnitNanosecond) {
    const double milliseconds = used->calendar->get(UCAL_MILLISECOND, status) + moment->rest;
    result->nanosecond = std::llround(milliseconds * 1e6);
  }
  return U_SUCCESS(status) ? result : nullptr;
}

NSDate NSCalendar::dateFromComponents(const Ref<NSDateComponents>& components) const {
  Implementation* const used = components ? current() : nullptr;
  if (!used) return nullptr;
  icu::Calendar& calendar = *used->calendar;
  calendar.clear();
  calendar.set(UCAL_YEAR, 1);
  double days = 0;
  for (const Field& field : determiningFields) {
    const std::int64_t value = (*components).*field.part;
    if (isUndefined(value)) continue;
    const std::optional<std::int32_t> number = icuNumber(value, field.distance);
    if (!number) return nullptr;
    calendar.set(field.icuField, *number);
    days += static_cast<double>(value) * field.days;
    if (!isInRange(days)) return nullptr;
  }
  const double nanoseconds =
      isUndefined(components->nanosecond) ? 0 : static_cast<double>(components->nanosecond);
  return dateOfCalendar(calendar, nanoseconds / nanosecondsPerSecond * millisecondsPerSecond);
}

NSDate NSCalendar::dateByAddingComponents(const Ref<NSDateComponents>& components,
                                          const NSDate& date) const {
  Implementation* const used = components ? current() : nullptr;
  const std::optional<Moment> moment = momentOf(date);
  if (!used || !setMoment(*used->calendar, moment)) return nullptr;
  UErrorCode status = U_ZERO_ERROR;
  double days = moment->milliseconds / (secondsPerDay * millisecondsPerSecond);
  for (const Field& field : addedFields) {
    const std::int64_t value = (*components).*field.part;
    if (isUndefined(value) || value == 0) continue;
    const std::optional<std::int32_t> amount = icuNumber(value, field.distance);
    days += static_cast<double>(value) * field.days;
    if (!amount || !isInRange(days)) return nullptr;
    used->calendar->add(field.icuField, *amount, status);
  }
  if (U_FAILURE(status)) return nullptr;
  double seconds = 0;
  for (const Duration& duration : durations) {
    const std::int64_t value = (*components).*duration.part;
    if (!isUndefined(value)) seconds += static_cast<double>(value) * duration.seconds;
  }
  return dateOfCalendar(*used->calendar, moment->rest + seconds * millisecondsPerSecond);
}

bool NSCalendar::isDate_equalToDate(const NSDate& date, const NSDate& other,
                                    NSCalendarUnit granularity) const {
  Implementation* const used = current();
  const auto wanted = std::ranges::find(granularities, granularity, &Granularity::unit);
  if (!used || wanted == std::end(granularities)) return false;
  icu::Calendar& calendar = *used->calendar;
  UErrorCode status = U_ZERO_ERROR;
  std::int32_t values[2][maxGranularityFields] = {};
  const NSDate* const dates[] = {&date, &other};
  for (std::size_t side = 0; side < std::size(dates); ++side) {
    if (!setMoment(calendar, momentOf(*dates[side]))) return false;
    for (std::size_t i = 0; i < wanted->count; ++i)
      values[side][i] = calendar.get(wanted->fields[i], status);
  }
  return U_SUCCESS(status) && std::ranges::equal(values[0], values[1]);
}

NSDate NSCalendar::startOfDayForDate(const NSDate& date) const {
  Implementation* const used = current();
  if (!used || !setMoment(*used->calendar, momentOf(date))) return nullptr;
  for (const UCalendarDateFields field :
       {UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND, UCAL_MILLISECOND})
    used->calendar->set(field, 0);
  return dateOfCalendar(*used->calendar, 0);
}

}  // namespace zeb
