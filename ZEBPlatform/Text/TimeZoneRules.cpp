#include <ZEBPlatform/Text/TimeZoneRulesPrivate.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <iterator>
#include <utility>

namespace zeb::detail {

namespace {

namespace chrono = std::chrono;

constexpr std::int64_t secondsPerDay = 86400;
/// The Gregorian calendar repeats itself after 400 years.
constexpr std::int64_t secondsPerCycle = 146097 * secondsPerDay;

constexpr std::int64_t floorDivide(std::int64_t number, std::int64_t divisor) noexcept {
  return number / divisor - (number % divisor < 0 ? 1 : 0);
}

/// Days since 1970 of the moment in a year close to 1970.
std::int64_t dayOf(const YearlyMoment& moment, chrono::year year) noexcept {
  const chrono::sys_days newYear = year / chrono::January / 1;
  switch (moment.kind) {
    case YearlyMoment::Kind::weekdayOfMonth: {
      const chrono::weekday weekday(moment.day);
      const chrono::month month(moment.month);
      const chrono::sys_days day = moment.week == 5
                                       ? chrono::sys_days(year / month / weekday[chrono::last])
                                       : chrono::sys_days(year / month / weekday[moment.week]);
      return day.time_since_epoch().count();
    }
    case YearlyMoment::Kind::dayWithoutLeapDay: {
      constexpr std::uint16_t lastOfFebruary = 59;
      const bool skipsLeapDay = year.is_leap() && moment.day > lastOfFebruary;
      return newYear.time_since_epoch().count() + moment.day - (skipsLeapDay ? 0 : 1);
    }
    case YearlyMoment::Kind::dayOfYear:
      break;
  }
  return newYear.time_since_epoch().count() + moment.day;
}

struct YearlyChange {
  std::int64_t moment;
  bool beginsDaylight;
};

/// The changes of the moment's year and of its two neighbours, in ascending order. Where the end of
/// one daylight-saving time is the begin of the next one, the begin comes last, so that it counts.
std::array<YearlyChange, 6> changesAround(std::int64_t moment, const LocalTimeType& standard,
                                          const YearlyRules::Daylight& daylight) noexcept {
  const std::int64_t cycle = floorDivide(moment, secondsPerCycle);
  const chrono::sys_seconds inCycle{chrono::seconds(moment - cycle * secondsPerCycle)};
  const chrono::year year = chrono::year_month_day(chrono::floor<chrono::days>(inCycle)).year();

  std::array<YearlyChange, 6> changes;
  auto next = changes.begin();
  for (const int distance : {-1, 0, 1}) {
    const auto secondOf = [&](const YearlyMoment& change, const LocalTimeType& before) {
      return cycle * secondsPerCycle +
             dayOf(change, year + chrono::years(distance)) * secondsPerDay + change.secondsOfDay -
             before.offset();
    };
    *next++ = {secondOf(daylight.begin, standard), true};
    *next++ = {secondOf(daylight.end, daylight.type), false};
  }
  std::ranges::sort(changes, {}, [](const YearlyChange& change) {
    return std::pair(change.moment, change.beginsDaylight);
  });
  return changes;
}

const LocalTimeType& typeAt(const YearlyRules& rules, std::int64_t moment) noexcept {
  if (!rules.daylight) return rules.standard;
  const auto changes = changesAround(moment, rules.standard, *rules.daylight);
  const auto next = std::ranges::upper_bound(changes, moment, {}, &YearlyChange::moment);
  // Three years have a change before every moment of the middle one.
  return next != changes.begin() && std::prev(next)->beginsDaylight ? rules.daylight->type
                                                                    : rules.standard;
}

}  // namespace

TimeZoneRules::TimeZoneRules(std::vector<LocalTimeType> types, std::vector<Change> changes,
                             std::optional<YearlyRules> future)
    : types_(std::move(types)), changes_(std::move(changes)), future_(std::move(future)) {}

const LocalTimeType& TimeZoneRules::typeAt(std::int64_t moment) const noexcept {
  if (isFuture(moment)) return detail::typeAt(*future_, moment);
  const auto next = std::ranges::upper_bound(changes_, moment, {}, &Change::moment);
  return types_[next == changes_.begin() ? 0 : std::prev(next)->type];
}

const LocalTimeType& TimeZoneRules::typeAtLocalTime(std::int64_t local, Ambiguity nonExisting,
                                                    Ambiguity repeated) const noexcept {
  // The offsets that may apply: no zone is further than a day away from UTC.
  const std::int32_t around[] = {typeAt(local - secondsPerDay).offset(), typeAt(local).offset(),
                                 typeAt(local + secondsPerDay).offset()};
  const auto [smallest, largest] = std::ranges::minmax(around);
  const LocalTimeType& before = typeAt(local - largest);
  const LocalTimeType& after = typeAt(local - smallest);

  const bool canBeBefore = typeAt(local - before.offset()).offset() == before.offset();
  const bool canBeAfter = typeAt(local - after.offset()).offset() == after.offset();
  if (canBeBefore != canBeAfter) return canBeBefore ? before : after;

  const Ambiguity wanted = canBeBefore ? repeated : nonExisting;
  if ((before.saving != 0) != (after.saving != 0)) {
    if (wanted.preference == Ambiguity::Preference::standard)
      return before.saving == 0 ? before : after;
    if (wanted.preference == Ambiguity::Preference::daylight)
      return before.saving != 0 ? before : after;
  }
  return wanted.takesLater ? after : before;
}

std::optional<std::int64_t> TimeZoneRules::nextChange(std::int64_t moment) const noexcept {
  if (!isFuture(moment)) {
    const auto next = std::ranges::upper_bound(changes_, moment, {}, &Change::moment);
    if (next != changes_.end()) return next->moment;
  }
  if (!future_ || !future_->daylight) return std::nullopt;
  const auto changes = changesAround(moment, future_->standard, *future_->daylight);
  const auto next = std::ranges::upper_bound(changes, moment, {}, &YearlyChange::moment);
  return next == changes.end() ? std::nullopt : std::optional(next->moment);
}

std::optional<std::int64_t> TimeZoneRules::previousChange(std::int64_t moment) const noexcept {
  if (isFuture(moment) && future_->daylight) {
    const auto changes = changesAround(moment, future_->standard, *future_->daylight);
    const auto next = std::ranges::upper_bound(changes, moment, {}, &YearlyChange::moment);
    if (next != changes.begin() && isFuture(std::prev(next)->moment))
      return std::prev(next)->moment;
  }
  const auto next = std::ranges::upper_bound(changes_, moment, {}, &Change::moment);
  return next == changes_.begin() ? std::nullopt : std::optional(std::prev(next)->moment);
}

}  // namespace zeb::detail
