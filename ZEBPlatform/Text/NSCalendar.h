#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>
#include <ZEBPlatform/Text/NSDateComponents.h>
#include <ZEBPlatform/Text/NSLocale.h>
#include <ZEBPlatform/Text/NSTimeZone.h>

#include <cstdint>
#include <memory>

namespace zeb {

/// Parts of a date, combined with `|` where several are asked for.
enum NSCalendarUnit : std::uint64_t {
  NSCalendarUnitEra = 1 << 1,
  NSCalendarUnitYear = 1 << 2,
  NSCalendarUnitMonth = 1 << 3,
  NSCalendarUnitDay = 1 << 4,
  NSCalendarUnitHour = 1 << 5,
  NSCalendarUnitMinute = 1 << 6,
  NSCalendarUnitSecond = 1 << 7,
  NSCalendarUnitWeekday = 1 << 9,
  NSCalendarUnitWeekOfYear = 1 << 13,
  NSCalendarUnitYearForWeekOfYear = 1 << 14,
  NSCalendarUnitNanosecond = 1 << 15,
};

constexpr NSCalendarUnit operator|(NSCalendarUnit left, NSCalendarUnit right) noexcept {
  return static_cast<NSCalendarUnit>(static_cast<std::uint64_t>(left) |
                                     static_cast<std::uint64_t>(right));
}

/// Identifiers of calendars; others are "chinese", "coptic", "ethiopic", "indian", "islamic",
/// "islamic-civil", "islamic-umalqura", "persian" and "roc".
extern const char* const NSCalendarIdentifierGregorian;  ///< "gregorian"
extern const char* const NSCalendarIdentifierBuddhist;   ///< "buddhist"
extern const char* const NSCalendarIdentifierHebrew;     ///< "hebrew"
extern const char* const NSCalendarIdentifierISO8601;    ///< "iso8601"
extern const char* const NSCalendarIdentifierJapanese;   ///< "japanese"

/// Computes with years, months and days, in a time zone and with a locale's first day of the week.
///
/// The Gregorian calendar changes to the Julian one before 15 October 1582. Calendars reach from
/// about 5.8 million years before to as many after the year 1; a date beyond that, also an infinite
/// one, counts as the last one within; adding to an infinite one gives nil. A date that is not a
/// number gives nil or false, like nil.
///
/// One thread at a time.
class NSCalendar : public NSObject {
 public:
  /// In the current locale and the default time zone of now. Nil for nil and unknown identifiers.
  static Ref<NSCalendar> calendarWithIdentifier(const NSString& identifier);
  /// The calendar that the current locale prefers, in the default time zone of now.
  static Ref<NSCalendar> currentCalendar();
  /// Such a calendar that always has the current locale and the default time zone, because each
  /// call looks for changes of both. What is set on it has no effect.
  static Ref<NSCalendar> autoupdatingCurrentCalendar();

  /// Such as "gregorian".
  NSString calendarIdentifier() const;
  Ref<NSLocale> locale() const;
  Ref<NSTimeZone> timeZone() const;
  /// Nil stands for the current locale and the default zone of now. A calendar keeps its
  /// identifier.
  void setLocale(const Ref<NSLocale>& locale);
  void setTimeZone(const Ref<NSTimeZone>& timeZone);

  /// The parts that `units` asks for; nil for a nil date.
  Ref<NSDateComponents> components(NSCalendarUnit units, const NSDate& date) const;

  /// The date of era, year, month, day, hour, minute, second and nanosecond; the other parts are
  /// not looked at. Undefined parts are as in the first moment of the year 1 of the calendar's
  /// present era. Larger values carry over: month 13 is January of the next year. A local time that
  /// the clocks skip gives the first moment after the gap, and one that they show twice the first
  /// of both. Nil if the date would lie beyond the calendar's range, or if a value except
  /// nanoseconds has more than 32 bits.
  NSDate dateFromComponents(const Ref<NSDateComponents>& components) const;

  /// Adds, in this order, years, months, weeks (`weekOfYear`), days and the shorter units, which
  /// are plain seconds. A day that the resulting month lacks becomes its last one. Undefined parts
  /// add nothing; the other parts are not looked at. Nil if an amount of years, months, weeks or
  /// days leads beyond the calendar's range.
  NSDate dateByAddingComponents(const Ref<NSDateComponents>& components, const NSDate& date) const;

  /// Whether the dates are the same down to this unit: with NSCalendarUnitDay, on the same day. One
  /// of the units from era to second, or NSCalendarUnitWeekOfYear; false for others.
  bool isDate_equalToDate(const NSDate& date, const NSDate& other,
                          NSCalendarUnit granularity) const;

  /// The first moment of the date's day.
  NSDate startOfDayForDate(const NSDate& date) const;

  /// For this library's other classes only.
  enum class Following : std::uint8_t { fixed, currentSettings };
  struct Implementation;
  NSCalendar(std::string icuIdentifier, Following following);

 protected:
  ~NSCalendar() override;

 private:
  Implementation* current() const;

  const Following following_;
  /// Empty for the one that the locale prefers.
  const std::string icuIdentifier_;
  mutable Ref<NSLocale> locale_;
  mutable Ref<NSTimeZone> timeZone_;
  /// Made at the first use and after a setting has changed.
  mutable std::unique_ptr<Implementation> implementation_;
};

}  // namespace zeb
