#include <ZEBUtilities/LocalizedDates/WireDatesPrivate.h>

#include <algorithm>
#include <cmath>
#include <string_view>

namespace zeb::detail {

namespace {

constexpr double millisecondsPerSecond = 1000;
constexpr std::int64_t millisecondsPerDay = 86'400'000;
// The first and the last millisecond of ICU's calendars; dates beyond count as these.
constexpr double minMilliseconds = -184'303'902'528'000'000.0;
constexpr double maxMilliseconds = 183'882'168'921'600'000.0;
/// 15 October 1582, the first day of the Gregorian calendar, in days since 1970.
constexpr std::int64_t gregorianBegin = -141'427;

constexpr char weekdays[] = "SunMonTueWedThuFriSat";
constexpr char months[] = "JanFebMarAprMayJunJulAugSepOctNovDec";
constexpr std::size_t nameLength = 3;

constexpr std::int64_t floorDivide(std::int64_t number, std::int64_t divisor) noexcept {
  return number / divisor - (number % divisor < 0 ? 1 : 0);
}

struct Day {
  std::int64_t year;  ///< 0 is the year before the year 1
  int month;          ///< from 0
  int day;            ///< from 1
};

/// The years begin with March here, so that a leap day is the last day of its year.
Day dayOf(std::int64_t daysSince1970) noexcept {
  constexpr std::int64_t daysPerCentury = 36'524;
  constexpr std::int64_t daysPerFourYears = 1'461;
  std::int64_t century = 0, dayOfCentury = 0;
  if (daysSince1970 >= gregorianBegin) {
    constexpr std::int64_t daysPerCycle = 4 * daysPerCentury + 1;
    const std::int64_t days = daysSince1970 + 719'468;  // since 1 March of the Gregorian year 0
    const std::int64_t cycle = floorDivide(days, daysPerCycle);
    const std::int64_t dayOfCycle = days - cycle * daysPerCycle;
    // Only the last century of a cycle ends with a leap day.
    century = (std::min)(dayOfCycle / daysPerCentury, std::int64_t{3});
    dayOfCentury = dayOfCycle - century * daysPerCentury;
    century += 4 * cycle;
  } else {
    dayOfCentury = daysSince1970 + 719'470;  // since 1 March of the Julian year 0
  }
  const std::int64_t leapCycle = floorDivide(dayOfCentury, daysPerFourYears);
  const std::int64_t dayOfLeapCycle = dayOfCentury - leapCycle * daysPerFourYears;
  const std::int64_t yearOfLeapCycle = (std::min)(dayOfLeapCycle / 365, std::int64_t{3});
  const auto dayOfYear = static_cast<int>(dayOfLeapCycle - yearOfLeapCycle * 365);
  // From March on, months have 31, 30, 31, 30, 31 days and so on: 153 in each five.
  const int month = (5 * dayOfYear + 2) / 153;
  const std::int64_t year = century * 100 + leapCycle * 4 + yearOfLeapCycle;
  return {year + (month >= 10 ? 1 : 0), (month + 2) % 12, dayOfYear - (153 * month + 2) / 5 + 1};
}

/// Writes one after the other into a buffer that is large enough for all formats.
class Writer {
 public:
  void text(std::string_view text) noexcept { end_ = std::ranges::copy(text, end_).out; }
  void name(const char* names, std::int64_t index) noexcept {
    text({names + static_cast<std::size_t>(index) * nameLength, nameLength});
  }
  void number(std::int64_t value, int minDigits) noexcept {
    char digits[20];
    char* place = std::end(digits);
    for (; value > 0 || minDigits > 0; --minDigits, value /= 10)
      *--place = static_cast<char>('0' + value % 10);
    text({place, static_cast<std::size_t>(std::end(digits) - place)});
  }
  std::string_view written() const noexcept {
    return {buffer_, static_cast<std::size_t>(end_ - buffer_)};
  }

 private:
  char buffer_[64];
  char* end_ = buffer_;
};

}  // namespace

NSString wireText(WireFormat format, const NSDate& date) {
  const double milliseconds = date.timeIntervalSince1970() * millisecondsPerSecond;
  if (date.isNil() || std::isnan(milliseconds)) return nullptr;
  const auto moment = static_cast<std::int64_t>(
      std::floor(std::clamp(milliseconds, minMilliseconds, maxMilliseconds)));
  const std::int64_t days = floorDivide(moment, millisecondsPerDay);
  const std::int64_t second = (moment - days * millisecondsPerDay) / 1000;
  constexpr std::int64_t weekdayOf1970 = 4;
  const std::int64_t weekday = days + weekdayOf1970 - floorDivide(days + weekdayOf1970, 7) * 7;
  const Day day = dayOf(days);
  // Within the era.
  const std::int64_t year = day.year > 0 ? day.year : 1 - day.year;
  const bool isRFC1123 = format == WireFormat::rfc1123;
  constexpr int yearDigits = 4;

  Writer writer;
  writer.name(weekdays, weekday);
  if (isRFC1123) {
    writer.text(", ");
    writer.number(day.day, 2);
    writer.text(" ");
    writer.name(months, day.month);
  } else {
    writer.text(" ");
    writer.name(months, day.month);
    writer.text(" ");
    writer.number(day.day, 2);
  }
  writer.text(" ");
  if (format != WireFormat::yearAtEnd) {
    writer.number(year, yearDigits);
    writer.text(" ");
  }
  writer.number(second / 3600, 2);
  writer.text(":");
  writer.number(second / 60 % 60, 2);
  writer.text(":");
  writer.number(second % 60, 2);
  writer.text(isRFC1123 ? " GMT" : " +0000");
  if (format == WireFormat::yearAtEnd) {
    writer.text(" ");
    writer.number(year, yearDigits);
  }
  return NSString(writer.written());
}

}  // namespace zeb::detail
