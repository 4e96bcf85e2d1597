#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>
#include <ZEBPlatform/Text/NSCalendar.h>
#include <ZEBPlatform/Text/NSLocale.h>
#include <ZEBPlatform/Text/NSTimeZone.h>

#include <cstdint>
#include <memory>

namespace zeb {

/// How much a date or time tells; the words and their order are the locale's.
enum NSDateFormatterStyle : std::uint64_t {
  NSDateFormatterNoStyle = 0,
  NSDateFormatterShortStyle = 1,
  NSDateFormatterMediumStyle = 2,
  NSDateFormatterLongStyle = 3,
  NSDateFormatterFullStyle = 4,
};

/// Turns dates into text and back, by two styles or by a pattern of Unicode's date fields (UTS #35)
/// such as "yyyy-MM-dd'T'HH:mm:ssZ". Patterns for other programs need the locale "en_US_POSIX",
/// because many locales prefer other digits or calendars.
///
/// Words and patterns are those of ICU 72; English times have a narrow no-break space (U+202F)
/// before "AM" and "PM". Under the locales "C" and "POSIX" the locale is "en_US_POSIX", whose words
/// are those of American English: a short date is "1/31/20" and a short time "9:41 PM", with the
/// same space.
///
/// Making one takes thousands of times as long as a call, so formatters are kept. One thread at a
/// time, also for reading.
class NSDateFormatter : public NSObject {
 public:
  /// Without styles, in the current locale and the default time zone of now, which it keeps.
  NSDateFormatter();

  NSDateFormatterStyle dateStyle() const noexcept { return dateStyle_; }
  NSDateFormatterStyle timeStyle() const noexcept { return timeStyle_; }
  /// Setting a style removes a pattern that was set. Other numbers count as no style.
  void setDateStyle(NSDateFormatterStyle style);
  void setTimeStyle(NSDateFormatterStyle style);

  /// The pattern that was set, else that of the styles; "" without any.
  NSString dateFormat() const;
  /// Counts more than the styles, until it is nil. A pattern with unknown letters formats and
  /// parses nothing.
  void setDateFormat(const NSString& pattern);

  const Ref<NSLocale>& locale() const noexcept { return locale_; }
  const Ref<NSTimeZone>& timeZone() const noexcept { return timeZone_; }
  /// Nil stands for the current locale and the default zone of now.
  void setLocale(const Ref<NSLocale>& locale);
  void setTimeZone(const Ref<NSTimeZone>& timeZone);
  /// Formats in the years and months of this calendar instead of the one that the locale prefers;
  /// only its identifier matters. Nil, as at first, takes the locale's.
  void setCalendar(const Ref<NSCalendar>& calendar);

  /// Whether days close to today are in words such as "yesterday", where a date style applies.
  bool doesRelativeDateFormatting() const noexcept { return isRelative_; }
  void setDoesRelativeDateFormatting(bool isRelative);
  /// Whether parsing accepts impossible values, such as the 32nd of a month, and other white space.
  /// False at first.
  bool isLenient() const noexcept { return isLenient_; }
  void setLenient(bool isLenient);

  /// "" if there is neither a style nor a pattern. Nil for nil, for a date that is not a number and
  /// for a pattern with unknown letters. Dates beyond the calendar's range, also infinite ones, are
  /// formatted as the last one within: in the Gregorian calendar, some time of the years 5838270
  /// before and 5828963 after the year 1.
  NSString stringFromDate(const NSDate& date) const;

  /// Nil unless the whole text is a date of this form.
  NSDate dateFromString(const NSString& text) const;

  /// The locale's pattern for the fields of a template such as "MMMd": right order, names and
  /// punctuation. The letter "j" stands for the hour as the locale writes it. An hour has as many
  /// digits as the template has letters, so that "hh" is always two digits, as users of this method
  /// expect; ICU alone would take the locale's usual number. The option is there for the future and
  /// has no effect. A nil locale is the current one. Nil for a nil template and for letters that
  /// are no fields.
  static NSString dateFormatFromTemplate(const NSString& templateText, std::uint64_t options,
                                         const Ref<NSLocale>& locale);

 protected:
  ~NSDateFormatter() override;

 private:
  struct Implementation;
  Implementation* current() const;
  bool hasForm() const noexcept {
    return !pattern_.isNil() || dateStyle_ != NSDateFormatterNoStyle ||
           timeStyle_ != NSDateFormatterNoStyle;
  }

  NSDateFormatterStyle dateStyle_ = NSDateFormatterNoStyle;
  NSDateFormatterStyle timeStyle_ = NSDateFormatterNoStyle;
  bool isRelative_ = false;
  bool isLenient_ = false;
  NSString pattern_;
  NSString calendarIdentifier_;
  Ref<NSLocale> locale_;
  Ref<NSTimeZone> timeZone_;
  /// Made at the first use and after a setting has changed.
  mutable std::unique_ptr<Implementation> implementation_;
};

}  // namespace zeb
