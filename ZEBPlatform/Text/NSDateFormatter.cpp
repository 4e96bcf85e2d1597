#include <ZEBPlatform/Text/ICULocalePrivate.h>
#include <ZEBPlatform/Text/NSDateFormatter.h>
#include <ZEBPlatform/Text/TimeZoneDatabasePrivate.h>
#include <ZEBPlatform/Text/UnicodeStringPrivate.h>
#include <unicode/calendar.h>
#include <unicode/dtptngen.h>
#include <unicode/smpdtfmt.h>

#include <cmath>
#include <optional>
#include <utility>

namespace zeb {

/// ICU's own function for a date copies the calendar and the time zone each time. We keep a second
/// calendar and pass that one, which is faster and can be lenient while parsing is not.
struct NSDateFormatter::Implementation {
  std::unique_ptr<icu::DateFormat> format;  ///< null if ICU lacks the data
  /// The same object if it has a pattern: all but relative formats.
  icu::SimpleDateFormat* simpleFormat = nullptr;
  std::unique_ptr<icu::Calendar> calendar;
};

namespace {

constexpr double millisecondsPerSecond = 1000;

icu::DateFormat::EStyle icuStyle(NSDateFormatterStyle style, bool isRelative) noexcept {
  int result = icu::DateFormat::kNone;
  switch (style) {
    case NSDateFormatterShortStyle:
      result = icu::DateFormat::kShort;
      break;
    case NSDateFormatterMediumStyle:
      result = icu::DateFormat::kMedium;
      break;
    case NSDateFormatterLongStyle:
      result = icu::DateFormat::kLong;
      break;
    case NSDateFormatterFullStyle:
      result = icu::DateFormat::kFull;
      break;
    default:
      return icu::DateFormat::kNone;
  }
  return static_cast<icu::DateFormat::EStyle>(result |
                                              (isRelative ? icu::DateFormat::kRelative : 0));
}

std::unique_ptr<icu::DateFormat> newFormat(NSDateFormatterStyle dateStyle,
                                           NSDateFormatterStyle timeStyle, bool isRelative,
                                           const icu::Locale& locale) {
  return std::unique_ptr<icu::DateFormat>(icu::DateFormat::createDateTimeInstance(
      icuStyle(dateStyle, isRelative), icuStyle(timeStyle, false), locale));
}

std::unique_ptr<icu::DateFormat> newFormat(const NSString& pattern, const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  auto format =
      std::make_unique<icu::SimpleDateFormat>(detail::unicodeString(pattern), locale, status);
  return U_SUCCESS(status) ? std::move(format) : nullptr;
}

/// Nothing if the text is not a date from its beginning to its end.
std::optional<double> parsedMilliseconds(const icu::DateFormat& format,
                                         const icu::UnicodeString& text) {
  icu::ParsePosition position(0);
  const double milliseconds = format.parse(text, position);
  if (position.getErrorIndex() >= 0 || position.getIndex() == 0 ||
      position.getIndex() != text.length())
    return std::nullopt;
  return milliseconds;
}

}  // namespace

NSDateFormatter::NSDateFormatter()
    : locale_(NSLocale::currentLocale()), timeZone_(NSTimeZone::defaultTimeZone()) {}

NSDateFormatter::~NSDateFormatter() = default;

void NSDateFormatter::setDateStyle(NSDateFormatterStyle style) {
  dateStyle_ = style > NSDateFormatterFullStyle ? NSDateFormatterNoStyle : style;
  pattern_ = nullptr;
  implementation_.reset();
}

void NSDateFormatter::setTimeStyle(NSDateFormatterStyle style) {
  timeStyle_ = style > NSDateFormatterFullStyle ? NSDateFormatterNoStyle : style;
  pattern_ = nullptr;
  implementation_.reset();
}

void NSDateFormatter::setDateFormat(const NSString& pattern) {
  pattern_ = pattern.copy();
  implementation_.reset();
}

void NSDateFormatter::setLocale(const Ref<NSLocale>& locale) {
  locale_ = locale ? locale : NSLocale::currentLocale();
  implementation_.reset();
}

void NSDateFormatter::setTimeZone(const Ref<NSTimeZone>& timeZone) {
  timeZone_ = timeZone ? timeZone : NSTimeZone::defaultTimeZone();
  if (!implementation_ || !implementation_->format) return;
  implementation_->format->setTimeZone(*timeZone_->implementation().zone);
  implementation_->calendar->setTimeZone(*timeZone_->implementation().zone);
}

void NSDateFormatter::setCalendar(const Ref<NSCalendar>& calendar) {
  calendarIdentifier_ = calendar ? calendar->calendarIdentifier() : NSString();
  implementation_.reset();
}

void NSDateFormatter::setDoesRelativeDateFormatting(bool isRelative) {
  isRelative_ = isRelative;
  implementation_.reset();
}

void NSDateFormatter::setLenient(bool isLenient) {
  isLenient_ = isLenient;
  implementation_.reset();
}

NSDateFormatter::Implementation* NSDateFormatter::current() const {
  if (!implementation_) {
    implementation_ = std::make_unique<Implementation>();
    const icu::Locale locale = detail::icuLocale(*locale_, calendarIdentifier_);
    std::unique_ptr<icu::DateFormat> format =
        pattern_.isNil() ? newFormat(dateStyle_, timeStyle_, isRelative_, locale)
                         : newFormat(pattern_, locale);
    if (format && format->getCalendar()) {
      std::unique_ptr<icu::Calendar> calendar(format->getCalendar()->clone());
      if (calendar) {
        calendar->setSkippedWallTimeOption(UCAL_WALLTIME_NEXT_VALID);
        format->adoptCalendar(calendar.release());
      }
      format->setTimeZone(*timeZone_->implementation().zone);
      implementation_->calendar.reset(format->getCalendar()->clone());
      implementation_->calendar->setLenient(true);
      format->setLenient(isLenient_);
      implementation_->simpleFormat = dynamic_cast<icu::SimpleDateFormat*>(format.get());
      implementation_->format = std::move(format);
    }
  }
  return implementation_->format ? implementation_.get() : nullptr;
}

NSString NSDateFormatter::dateFormat() const {
  if (!pattern_.isNil()) return pattern_;
  if (!hasForm()) return "";
  const std::unique_ptr<icu::DateFormat> format =
      newFormat(dateStyle_, timeStyle_, false, detail::icuLocale(*locale_, calendarIdentifier_));
  const auto* const simpleFormat = dynamic_cast<icu::SimpleDateFormat*>(format.get());
  if (!simpleFormat) return nullptr;
  icu::UnicodeString pattern;
  simpleFormat->toPattern(pattern);
  return detail::nsString(pattern);
}

NSString NSDateFormatter::stringFromDate(const NSDate& date) const {
  const double milliseconds = date.timeIntervalSince1970() * millisecondsPerSecond;
  if (date.isNil() || std::isnan(milliseconds)) return nullptr;
  if (!hasForm()) return "";
  Implementation* const used = current();
  if (!used) return nullptr;
  UErrorCode status = U_ZERO_ERROR;
  icu::UnicodeString text;
  used->calendar->setTime(milliseconds, status);
  if (used->simpleFormat) {
    used->simpleFormat->format(*used->calendar, text, nullptr, status);
  } else if (U_SUCCESS(status)) {
    icu::FieldPosition position(icu::FieldPosition::DONT_CARE);
    used->format->format(*used->calendar, text, position);
  }
  return U_SUCCESS(status) ? detail::nsString(text) : NSString();
}

NSDate NSDateFormatter::dateFromString(const NSString& text) const {
  Implementation* const used = text.empty() || !hasForm() ? nullptr : current();
  if (!used) return nullptr;
  const icu::UnicodeString units = detail::unicodeString(text);
  std::optional<double> milliseconds = parsedMilliseconds(*used->format, units);
  if (!milliseconds && !isLenient_) {
    // The strict calendar also refuses local times that the zone's clocks skip, such as midnight on
    // some days. So it checks the text in a zone without skipped times, and the lenient calendar
    // then gives the first moment after the gap.
    used->format->setTimeZone(*icu::TimeZone::getGMT());
    const bool isValid = parsedMilliseconds(*used->format, units).has_value();
    used->format->setTimeZone(*timeZone_->implementation().zone);
    if (!isValid) return nullptr;
    used->format->setCalendarLenient(true);
    milliseconds = parsedMilliseconds(*used->format, units);
    used->format->setCalendarLenient(false);
  }
  if (!milliseconds) return nullptr;
  return NSDate::dateWithTimeIntervalSince1970(*milliseconds / millisecondsPerSecond);
}

NSString NSDateFormatter::dateFormatFromTemplate(const NSString& templateText, std::uint64_t,
                                                 const Ref<NSLocale>& locale) {
  if (templateText.isNil()) return nullptr;
  UErrorCode status = U_ZERO_ERROR;
  const Ref<NSLocale> used = locale ? locale : NSLocale::currentLocale();
  const std::unique_ptr<icu::DateTimePatternGenerator> generator(
      icu::DateTimePatternGenerator::createInstance(detail::icuLocale(*used), status));
  if (U_FAILURE(status)) return nullptr;
  const icu::UnicodeString pattern = generator->getBestPattern(
      detail::unicodeString(templateText), UDATPG_MATCH_HOUR_FIELD_LENGTH, status);
  return U_SUCCESS(status) ? detail::nsString(pattern) : NSString();
}

}  // namespace zeb
