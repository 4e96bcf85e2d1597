#include <ZEBPlatform/Text/detail/StringUnits.h>
#include <ZEBUtilities/Text/NSString+HTTPSerialization.h>

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace zeb {

namespace {

/// In lower case; each begins with its abbreviation of three letters.
constexpr std::array<std::string_view, 7> dayNames = {"sunday",   "monday", "tuesday", "wednesday",
                                                      "thursday", "friday", "saturday"};
constexpr std::array<std::string_view, 12> monthNames = {
    "january", "february", "march",     "april",   "may",      "june",
    "july",    "august",   "september", "october", "november", "december"};
constexpr std::size_t abbreviationLength = 3;

constexpr std::int64_t secondsOfMinute = 60;
constexpr std::int64_t secondsOfHour = 3600;
constexpr std::int64_t secondsOfDay = 86400;

/// Days from 1 January 1970 to the first day of a month, which is 0 to 11, in the Gregorian
/// calendar.
constexpr std::int64_t daysToMonth(std::int64_t year, std::int64_t month) noexcept {
  // Years begin in March here, so that the leap day is the last day of a year.
  const std::int64_t marchYear = month < 2 ? year - 1 : year;
  const std::int64_t marchMonth = (month + 10) % 12;
  const std::int64_t yearOfCycle = (marchYear + 400) % 400;
  const std::int64_t cycles = (marchYear + 400) / 400 - 1;
  const std::int64_t daysOfYears = yearOfCycle * 365 + yearOfCycle / 4 - yearOfCycle / 100;
  const std::int64_t daysOfMonths = (153 * marchMonth + 2) / 5;
  constexpr std::int64_t daysOfCycle = 146'097;
  constexpr std::int64_t daysBefore1970 = 719'468;  // since 1 March of the year 0
  return cycles * daysOfCycle + daysOfYears + daysOfMonths - daysBefore1970;
}
static_assert(daysToMonth(1970, 0) == 0 && daysToMonth(2000, 2) == 11'017 &&
              daysToMonth(0, 0) == -719'528);

/// Reads the parts of a timestamp one after the other.
template <class Units>
class TimestampReader {
 public:
  explicit TimestampReader(Units units) noexcept : units_(units) {}

  void skipSpace() noexcept {
    while (isSpace(unit())) ++position_;
  }

  bool skipColon() noexcept { return unit() == u':' && (++position_, true); }

  /// The index of the name, abbreviated or full, that the text goes on with.
  std::optional<std::size_t> name(std::span<const std::string_view> names) noexcept {
    for (std::size_t index = 0; index < names.size(); ++index) {
      if (!goesOnWith(names[index].substr(0, abbreviationLength))) continue;
      position_ += goesOnWith(names[index]) ? names[index].size() : abbreviationLength;
      return index;
    }
    return std::nullopt;
  }

  /// A number of at most `maxDigits` digits after any spaces. A digit that would make the number
  /// too large belongs to what follows.
  std::optional<std::int64_t> number(std::int64_t minimum, std::int64_t maximum,
                                     int maxDigits) noexcept {
    while (unit() == u' ') ++position_;
    if (!isDigit(unit())) return std::nullopt;
    std::int64_t value = 0;
    do {
      value = value * 10 + digit();
    } while (--maxDigits > 0 && value * 10 <= maximum && isDigit(unit()));
    if (value < minimum || value > maximum) return std::nullopt;
    return value;
  }

  /// Seconds east of UTC.
  std::optional<std::int64_t> offset() noexcept {
    skipSpace();
    const char16_t sign = unit();
    if (sign == u'Z') {
      ++position_;
      return 0;
    }
    if (sign != u'+' && sign != u'-') return std::nullopt;
    ++position_;
    std::int64_t value = 0;
    int digits = 0;
    while (digits < 4 && isDigit(unit())) {
      value = value * 10 + digit();
      ++digits;
      if (digits == 2 && unit() == u':' && isDigit(unit(1))) ++position_;
    }
    if (digits == 2) value *= 100;
    if ((digits != 2 && digits != 4) || value % 100 >= 60) return std::nullopt;
    const std::int64_t seconds = value / 100 * secondsOfHour + value % 100 * secondsOfMinute;
    return sign == u'-' ? -seconds : seconds;
  }

 private:
  static bool isSpace(char16_t unit) noexcept {
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
  }
  static bool isDigit(char16_t unit) noexcept { return unit >= u'0' && unit <= u'9'; }

  /// 0 at the end.
  char16_t unit(std::size_t further = 0) const noexcept {
    return position_ + further < units_.size() ? static_cast<char16_t>(units_[position_ + further])
                                               : u'\0';
  }
  std::int64_t digit() noexcept { return static_cast<char16_t>(units_[position_++]) - u'0'; }

  bool goesOnWith(std::string_view lowerCase) const noexcept {
    if (units_.size() - position_ < lowerCase.size()) return false;
    for (std::size_t index = 0; index < lowerCase.size(); ++index) {
      // Letters of ASCII differ from their other case in this bit only.
      const int unit = static_cast<char16_t>(units_[position_ + index]) | ('a' ^ 'A');
      if (unit != lowerCase[index]) return false;
    }
    return true;
  }

  Units units_;
  std::size_t position_ = 0;
};

/// Seconds since 1970.
template <class Units>
std::optional<std::int64_t> readTimestamp(Units units) noexcept {
  TimestampReader<Units> reader(units);
  if (!reader.name(dayNames)) return std::nullopt;
  reader.skipSpace();
  const auto month = reader.name(monthNames);
  if (!month) return std::nullopt;
  reader.skipSpace();
  const auto day = reader.number(1, 31, 2);
  if (!day) return std::nullopt;
  reader.skipSpace();
  const auto hour = reader.number(0, 23, 2);
  if (!hour || !reader.skipColon()) return std::nullopt;
  const auto minute = reader.number(0, 59, 2);
  if (!minute || !reader.skipColon()) return std::nullopt;
  const auto second = reader.number(0, 61, 2);
  if (!second) return std::nullopt;
  const auto offset = reader.offset();
  if (!offset) return std::nullopt;
  reader.skipSpace();
  const auto year = reader.number(0, 9999, 4);
  if (!year) return std::nullopt;
  const std::int64_t days = daysToMonth(*year, static_cast<std::int64_t>(*month)) + *day - 1;
  return days * secondsOfDay + *hour * secondsOfHour + *minute * secondsOfMinute + *second -
         *offset;
}

}  // namespace

NSDate zeb_dateFromStringFormattedLikeHTTPDate(const NSString& string) {
  const std::optional<std::int64_t> seconds =
      detail::withUnits(string, [](auto units) { return readTimestamp(units); });
  return seconds ? NSDate::dateWithTimeIntervalSince1970(static_cast<double>(*seconds)) : NSDate();
}

}  // namespace zeb
