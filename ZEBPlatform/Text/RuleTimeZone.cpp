#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/Text/RuleTimeZonePrivate.h>
#include <unicode/gregocal.h>
#include <unicode/tzrule.h>
#include <unicode/tztrans.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace zeb::detail {

namespace {

constexpr std::int32_t milliseconds = 1000;
constexpr double maxSeconds = 1e15;

void setOffsets(const LocalTimeType& type, std::int32_t& standardOffset,
                std::int32_t& saving) noexcept {
  standardOffset = type.standardOffset * milliseconds;
  saving = type.saving * milliseconds;
}

std::int64_t now() noexcept { return secondsOfMilliseconds(secondsSince1970() * milliseconds); }

/// ICU's options are numbers of two parts.
TimeZoneRules::Ambiguity ambiguityOf(UTimeZoneLocalOption option) noexcept {
  constexpr int preferenceMask = 0x03;
  constexpr int laterMask = 0x0C;
  using Preference = TimeZoneRules::Ambiguity::Preference;
  Preference preference = Preference::none;
  if ((option & preferenceMask) == (UCAL_TZ_LOCAL_STANDARD_FORMER & preferenceMask))
    preference = Preference::standard;
  if ((option & preferenceMask) == (UCAL_TZ_LOCAL_DAYLIGHT_FORMER & preferenceMask))
    preference = Preference::daylight;
  return {preference, (option & laterMask) == (UCAL_TZ_LOCAL_LATTER & laterMask)};
}

icu::InitialTimeZoneRule* newRule(const LocalTimeType& type) {
  const icu::UnicodeString name(type.abbreviation.data(),
                                static_cast<std::int32_t>(type.abbreviation.size()), US_INV);
  return new icu::InitialTimeZoneRule(name, type.standardOffset * milliseconds,
                                      type.saving * milliseconds);
}

UBool setTransition(const TimeZoneRules& rules, std::optional<std::int64_t> moment,
                    icu::TimeZoneTransition& result) {
  if (!moment) return false;
  result.setTime(static_cast<double>(*moment) * milliseconds);
  result.adoptFrom(newRule(rules.typeAt(*moment - 1)));
  result.adoptTo(newRule(rules.typeAt(*moment)));
  return true;
}

}  // namespace

std::int64_t secondsOfMilliseconds(double value) noexcept {
  const double seconds = std::floor(value / milliseconds);
  if (std::isnan(seconds)) return 0;
  return static_cast<std::int64_t>(std::clamp(seconds, -maxSeconds, maxSeconds));
}

RuleTimeZone::RuleTimeZone(const icu::UnicodeString& identifier,
                           std::shared_ptr<const TimeZoneRules> rules)
    : SimpleTimeZone(0, identifier), rules_(std::move(rules)) {}

std::int32_t RuleTimeZone::getOffset(std::uint8_t era, std::int32_t year, std::int32_t month,
                                     std::int32_t day, std::uint8_t weekday,
                                     std::int32_t millisecondsOfDay, UErrorCode& status) const {
  return getOffset(era, year, month, day, weekday, millisecondsOfDay, 0, status);
}

std::int32_t RuleTimeZone::getOffset(std::uint8_t era, std::int32_t year, std::int32_t month,
                                     std::int32_t day, std::uint8_t, std::int32_t millisecondsOfDay,
                                     std::int32_t, UErrorCode& status) const {
  namespace chrono = std::chrono;
  constexpr std::int32_t maxYear = 32000;
  if (era == icu::GregorianCalendar::BC) year = 1 - year;
  const chrono::sys_days monthBegin = chrono::year(std::clamp(year, -maxYear, maxYear)) /
                                      chrono::month(static_cast<unsigned>(month) % 12 + 1) / 1;
  const auto days = static_cast<double>(monthBegin.time_since_epoch().count() + day - 1);
  std::int32_t standardOffset = 0, saving = 0;
  // The time of day is given in standard time, as ICU does for a date that is not local.
  getOffset(days * 86400 * milliseconds + millisecondsOfDay, true, standardOffset, saving, status);
  return standardOffset + saving;
}

void RuleTimeZone::getOffset(UDate date, UBool isLocal, std::int32_t& standardOffset,
                             std::int32_t& saving, UErrorCode& status) const {
  if (isLocal) {
    getOffsetFromLocal(date, UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_LATTER, standardOffset, saving,
                       status);
  } else if (U_SUCCESS(status)) {
    setOffsets(rules_->typeAt(secondsOfMilliseconds(date)), standardOffset, saving);
  }
}

void RuleTimeZone::getOffsetFromLocal(UDate date, UTimeZoneLocalOption nonExisting,
                                      UTimeZoneLocalOption repeated, std::int32_t& standardOffset,
                                      std::int32_t& saving, UErrorCode& status) const {
  if (U_FAILURE(status)) return;
  setOffsets(rules_->typeAtLocalTime(secondsOfMilliseconds(date), ambiguityOf(nonExisting),
                                     ambiguityOf(repeated)),
             standardOffset, saving);
}

std::int32_t RuleTimeZone::getRawOffset() const {
  return rules_->typeAt(now()).standardOffset * milliseconds;
}

std::int32_t RuleTimeZone::getDSTSavings() const {
  constexpr std::int32_t usualSaving = 3'600'000;
  return useDaylightTime() ? usualSaving : 0;
}

UBool RuleTimeZone::useDaylightTime() const {
  constexpr std::int64_t year = 366 * 86400;
  const std::int64_t moment = now();
  if (rules_->typeAt(moment).saving != 0) return true;
  const std::optional<std::int64_t> change = rules_->nextChange(moment);
  return change && *change < moment + year && rules_->typeAt(*change).saving != 0;
}

UBool RuleTimeZone::inDaylightTime(UDate date, UErrorCode& status) const {
  return U_SUCCESS(status) && rules_->typeAt(secondsOfMilliseconds(date)).saving != 0;
}

UBool RuleTimeZone::hasSameRules(const icu::TimeZone& other) const {
  const auto* const zone = dynamic_cast<const RuleTimeZone*>(&other);
  return zone && (zone->rules_ == rules_ || *zone->rules_ == *rules_);
}

UBool RuleTimeZone::getNextTransition(UDate base, UBool inclusive,
                                      icu::TimeZoneTransition& result) const {
  std::int64_t moment = secondsOfMilliseconds(base);
  if (inclusive && static_cast<double>(moment) * milliseconds == base) --moment;
  return setTransition(*rules_, rules_->nextChange(moment), result);
}

UBool RuleTimeZone::getPreviousTransition(UDate base, UBool inclusive,
                                          icu::TimeZoneTransition& result) const {
  std::int64_t moment = secondsOfMilliseconds(base);
  if (!inclusive && static_cast<double>(moment) * milliseconds == base) --moment;
  return setTransition(*rules_, rules_->previousChange(moment), result);
}

std::int32_t RuleTimeZone::countTransitionRules(UErrorCode&) const { return 0; }

void RuleTimeZone::getTimeZoneRules(const icu::InitialTimeZoneRule*& initial,
                                    const icu::TimeZoneRule*[], std::int32_t& count,
                                    UErrorCode& status) const {
  initial = nullptr;
  count = 0;
  if (U_SUCCESS(status)) status = U_UNSUPPORTED_ERROR;
}

RuleTimeZone* RuleTimeZone::clone() const { return new RuleTimeZone(*this); }

UClassID RuleTimeZone::getDynamicClassID() const {
  static char identity;
  return &identity;
}

}  // namespace zeb::detail
