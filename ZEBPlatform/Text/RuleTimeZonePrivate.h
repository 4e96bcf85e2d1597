#pragma once

#include <ZEBPlatform/Text/TimeZoneRulesPrivate.h>
#include <unicode/simpletz.h>

#include <memory>

namespace zeb::detail {

/// Gives our rules to ICU's calendars and formatters. Copies share the rules. Immutable.
///
/// Everything that depends on the rules of the base class is overridden. It is the base class only
/// because ICU's calendars ask for transitions and for the offsets of local times only zones of the
/// four classes that they know, which they find with dynamic_cast.
class RuleTimeZone final : public icu::SimpleTimeZone {
 public:
  /// ICU finds the zone's words by its identifier.
  RuleTimeZone(const icu::UnicodeString& identifier, std::shared_ptr<const TimeZoneRules> rules);

  const TimeZoneRules& rules() const noexcept { return *rules_; }

  using icu::TimeZone::getOffset;
  std::int32_t getOffset(std::uint8_t era, std::int32_t year, std::int32_t month, std::int32_t day,
                         std::uint8_t weekday, std::int32_t milliseconds,
                         UErrorCode& status) const override;
  std::int32_t getOffset(std::uint8_t era, std::int32_t year, std::int32_t month, std::int32_t day,
                         std::uint8_t weekday, std::int32_t milliseconds, std::int32_t monthLength,
                         UErrorCode& status) const override;
  void getOffset(UDate date, UBool isLocal, std::int32_t& standardOffset, std::int32_t& saving,
                 UErrorCode& status) const override;
  void getOffsetFromLocal(UDate date, UTimeZoneLocalOption nonExisting,
                          UTimeZoneLocalOption repeated, std::int32_t& standardOffset,
                          std::int32_t& saving, UErrorCode& status) const override;
  /// Does nothing, because the rules are shared.
  void setRawOffset(std::int32_t) override {}
  std::int32_t getRawOffset() const override;
  std::int32_t getDSTSavings() const override;
  UBool useDaylightTime() const override;
  UBool inDaylightTime(UDate date, UErrorCode& status) const override;
  UBool hasSameRules(const icu::TimeZone& other) const override;
  UBool getNextTransition(UDate base, UBool inclusive,
                          icu::TimeZoneTransition& result) const override;
  UBool getPreviousTransition(UDate base, UBool inclusive,
                              icu::TimeZoneTransition& result) const override;
  /// The rules cannot be given in ICU's form: there are none, and asking for them is an error.
  std::int32_t countTransitionRules(UErrorCode& status) const override;
  void getTimeZoneRules(const icu::InitialTimeZoneRule*& initial, const icu::TimeZoneRule* rules[],
                        std::int32_t& count, UErrorCode& status) const override;
  RuleTimeZone* clone() const override;
  UClassID getDynamicClassID() const override;

 private:
  std::shared_ptr<const TimeZoneRules> rules_;
};

/// Whole seconds since 1970, rounded down and within what `TimeZoneRules` accepts.
std::int64_t secondsOfMilliseconds(double milliseconds) noexcept;

}  // namespace zeb::detail
