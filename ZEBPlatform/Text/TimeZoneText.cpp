#include <ZEBPlatform/Text/TimeZoneRulesPrivate.h>

#include <algorithm>
#include <utility>

namespace zeb::detail {

namespace {

constexpr std::int32_t secondsPerHour = 3600;
constexpr std::int32_t maxOffsetHours = 24;
constexpr std::int32_t maxChangeHours = 167;
constexpr std::size_t minAbbreviationLength = 3;
constexpr std::size_t maxAbbreviationLength = 32;
/// The moments of the United States since 2007, which POSIX leaves to the system.
constexpr std::string_view usualMoments = ",M3.2.0,M11.1.0";

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
bool isLetter(char c) noexcept { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// Reads from the beginning of a text. Each function answers nothing if its part is missing or
/// beyond its limits; then the whole text is refused.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  bool isAtEnd() const noexcept { return rest_.empty(); }
  bool isAt(char character) const noexcept { return rest_.starts_with(character); }

  bool skip(char character) noexcept {
    if (!isAt(character)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  std::optional<std::int32_t> number(std::int32_t min, std::int32_t max) noexcept {
    if (isAtEnd() || !isDigit(rest_.front())) return std::nullopt;
    std::int32_t value = 0;
    while (!isAtEnd() && isDigit(rest_.front())) {
      value = value * 10 + (rest_.front() - '0');
      if (value > max) return std::nullopt;
      rest_.remove_prefix(1);
    }
    return value < min ? std::nullopt : std::optional(value);
  }

  /// Letters, or anything of letters, digits and signs in angle brackets.
  std::optional<std::string> abbreviation() {
    const bool isQuoted = skip('<');
    const auto end = std::ranges::find_if_not(rest_, [&](char c) {
      return isLetter(c) || (isQuoted && (isDigit(c) || c == '+' || c == '-'));
    });
    std::string name(rest_.begin(), end);
    rest_.remove_prefix(name.size());
    if (isQuoted && !skip('>')) return std::nullopt;
    if (name.size() < minAbbreviationLength || name.size() > maxAbbreviationLength)
      return std::nullopt;
    return name;
  }

  /// Hours with optional sign, minutes and seconds, as seconds.
  std::optional<std::int32_t> time(std::int32_t maxHours) noexcept {
    const bool isNegative = skip('-');
    if (!isNegative) skip('+');
    std::optional<std::int32_t> seconds = number(0, maxHours);
    if (!seconds) return std::nullopt;
    *seconds *= secondsPerHour;
    for (const std::int32_t unit : {60, 1}) {
      if (!skip(':')) break;
      const std::optional<std::int32_t> part = number(0, 59);
      if (!part) return std::nullopt;
      *seconds += *part * unit;
    }
    return isNegative ? -*seconds : *seconds;
  }

  /// ",M10.5.0/3", ",J60" or ",59".
  std::optional<YearlyMoment> moment() noexcept {
    constexpr std::int32_t usualTime = 2 * secondsPerHour;
    if (!skip(',')) return std::nullopt;
    YearlyMoment result{YearlyMoment::Kind::dayOfYear, 0, 0, 0, usualTime};
    std::optional<std::int32_t> day;
    if (skip('M')) {
      const std::optional<std::int32_t> month = number(1, 12);
      if (!month || !skip('.')) return std::nullopt;
      const std::optional<std::int32_t> week = number(1, 5);
      if (!week || !skip('.')) return std::nullopt;
      day = number(0, 6);
      result.kind = YearlyMoment::Kind::weekdayOfMonth;
      result.month = static_cast<std::uint8_t>(*month);
      result.week = static_cast<std::uint8_t>(*week);
    } else if (skip('J')) {
      day = number(1, 365);
      result.kind = YearlyMoment::Kind::dayWithoutLeapDay;
    } else {
      day = number(0, 365);
    }
    if (!day) return std::nullopt;
    result.day = static_cast<std::uint16_t>(*day);
    if (skip('/')) {
      const std::optional<std::int32_t> seconds = time(maxChangeHours);
      if (!seconds) return std::nullopt;
      result.secondsOfDay = *seconds;
    }
    return result;
  }

 private:
  std::string_view rest_;
};

}  // namespace

std::optional<YearlyRules> yearlyRulesFromText(std::string_view text) {
  Reader reader(text);
  std::optional<std::string> standardName = reader.abbreviation();
  if (!standardName) return std::nullopt;
  const std::optional<std::int32_t> west = reader.time(maxOffsetHours);
  if (!west) return std::nullopt;
  // POSIX counts to the west.
  YearlyRules rules{{-*west, 0, std::move(*standardName)}, std::nullopt};
  if (reader.isAtEnd()) return rules;

  std::optional<std::string> daylightName = reader.abbreviation();
  if (!daylightName) return std::nullopt;
  std::int32_t daylightOffset = rules.standard.offset() + secondsPerHour;
  if (!reader.isAtEnd() && !reader.isAt(',')) {
    const std::optional<std::int32_t> daylightWest = reader.time(maxOffsetHours);
    if (!daylightWest) return std::nullopt;
    daylightOffset = -*daylightWest;
  }
  if (reader.isAtEnd()) reader = Reader(usualMoments);
  const std::optional<YearlyMoment> begin = reader.moment();
  const std::optional<YearlyMoment> end = begin ? reader.moment() : std::nullopt;
  if (!end || !reader.isAtEnd()) return std::nullopt;

  const std::int32_t saving = daylightOffset - rules.standard.offset();
  if (saving >= 0) {
    rules.daylight = {{rules.standard.offset(), saving, std::move(*daylightName)}, *begin, *end};
  } else {
    // Ireland's winter is written as a negative daylight-saving time. The words for its times are
    // those of a summer time, so the two exchange their roles.
    rules.daylight = {
        {daylightOffset, -saving, std::move(rules.standard.abbreviation)}, *end, *begin};
    rules.standard = {daylightOffset, 0, std::move(*daylightName)};
  }
  return rules;
}

}  // namespace zeb::detail
