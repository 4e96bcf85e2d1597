#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zeb::detail {

/// What the clocks of a zone show during some time. Offsets are seconds east of UTC.
struct LocalTimeType {
  std::int32_t standardOffset;
  /// What daylight-saving time adds; 0 in standard time.
  std::int32_t saving;
  std::string abbreviation;

  std::int32_t offset() const noexcept { return standardOffset + saving; }
  bool operator==(const LocalTimeType&) const = default;
};

/// A moment of each year, in the local time that applied before it.
struct YearlyMoment {
  enum class Kind : std::uint8_t {
    /// The `week`th `day` (0 is Sunday) of the month; week 5 is the last one.
    weekdayOfMonth,
    /// The day from 1 to 365; 29 February is never counted.
    dayWithoutLeapDay,
    /// The day from 0 to 365; 29 February is counted.
    dayOfYear,
  };
  Kind kind;
  std::uint8_t month;
  std::uint8_t week;
  std::uint16_t day;
  std::int32_t secondsOfDay;

  bool operator==(const YearlyMoment&) const = default;
};

/// Rules that repeat every year without end.
struct YearlyRules {
  struct Daylight {
    LocalTimeType type;
    YearlyMoment begin;
    YearlyMoment end;

    bool operator==(const Daylight&) const = default;
  };
  LocalTimeType standard;
  std::optional<Daylight> daylight;

  bool operator==(const YearlyRules&) const = default;
};

/// The history and the future of one zone's offsets from UTC. Moments are seconds since 1970; all
/// functions accept moments up to 10^15 seconds away. Immutable.
class TimeZoneRules {
 public:
  struct Change {
    std::int64_t moment;
    std::size_t type;  ///< index of the type that applies from then on

    bool operator==(const Change&) const = default;
  };

  /// Which of two types a local time means that does not exist, or exists twice, because the clocks
  /// are set forward or back: the one before or after that change. The other two take the standard
  /// or daylight type, if exactly one of the two is that, and otherwise what follows.
  struct Ambiguity {
    enum class Preference : std::uint8_t { none, standard, daylight };
    Preference preference;
    bool takesLater;
  };

  /// `types` is not empty; its first one applies before the first change. The moments of `changes`
  /// ascend. `future` applies from the last change on.
  TimeZoneRules(std::vector<LocalTimeType> types, std::vector<Change> changes,
                std::optional<YearlyRules> future);

  const LocalTimeType& typeAt(std::int64_t moment) const noexcept;
  /// For a local time: seconds since 1970 as if the local time were UTC.
  const LocalTimeType& typeAtLocalTime(std::int64_t local, Ambiguity nonExisting,
                                       Ambiguity repeated) const noexcept;

  /// The nearest change after the moment, and the nearest one at or before it.
  std::optional<std::int64_t> nextChange(std::int64_t moment) const noexcept;
  std::optional<std::int64_t> previousChange(std::int64_t moment) const noexcept;

  bool operator==(const TimeZoneRules&) const = default;

 private:
  bool isFuture(std::int64_t moment) const noexcept {
    return future_ && (changes_.empty() || moment >= changes_.back().moment);
  }

  std::vector<LocalTimeType> types_;
  std::vector<Change> changes_;
  std::optional<YearlyRules> future_;
};

/// The rules of a compiled time-zone file (RFC 8536, all versions). Nothing for malformed content,
/// and for files that count leap seconds, because dates do not.
std::optional<TimeZoneRules> timeZoneRulesFromFile(std::string_view content);

/// The yearly rules in the form of the TZ environment variable, such as
/// "CET-1CEST,M3.5.0,M10.5.0/3" or "<+0330>-3:30" (POSIX, with times of -167 to 167 hours as in
/// RFC 8536). Without the two moments, those of the United States apply. Nothing for other text.
std::optional<YearlyRules> yearlyRulesFromText(std::string_view text);

}  // namespace zeb::detail
