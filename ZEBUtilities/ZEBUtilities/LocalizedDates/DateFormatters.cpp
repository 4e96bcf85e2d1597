#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBUtilities/LocalizedDates/DateFormattersPrivate.h>
#include <ZEBUtilities/LocalizedDates/NSDate+ZEBLocalizedAdditions.h>

#include <array>
#include <span>

namespace zeb::detail {

namespace {

/// How a formatter is set up: by two styles, or by a template.
struct Recipe {
  NSDateFormatterStyle dateStyle;
  NSDateFormatterStyle timeStyle;
  const char* templateText = nullptr;
};

// In the order of `DateFormat`. The medium dates deliberately have the short style.
constexpr Recipe recipes[] = {
    {NSDateFormatterShortStyle, NSDateFormatterNoStyle},
    {NSDateFormatterNoStyle, NSDateFormatterNoStyle, "MMMd"},
    {NSDateFormatterShortStyle, NSDateFormatterShortStyle},
    {NSDateFormatterLongStyle, NSDateFormatterShortStyle},
    {NSDateFormatterNoStyle, NSDateFormatterNoStyle, "MMMMd"},
    {NSDateFormatterShortStyle, NSDateFormatterNoStyle},
    {NSDateFormatterShortStyle, NSDateFormatterShortStyle},
    {NSDateFormatterNoStyle, NSDateFormatterShortStyle},
    {NSDateFormatterLongStyle, NSDateFormatterNoStyle},
    {NSDateFormatterNoStyle, NSDateFormatterNoStyle, "EEEE hh mm a"},
};

constexpr std::size_t followingCount = static_cast<std::size_t>(DateFormat::longDate);

struct Cache {
  std::array<Ref<NSDateFormatter>, std::size(recipes)> slots;
  /// Of the notification about the system's time zone, from the first formatter on that follows it.
  Ref<NSObject> timeZoneObserver;
};

Cache& cache() {
  static NeverDestroyed<Cache> instance;
  return *instance;
}

Ref<NSDateFormatter> newFormatter(DateFormat format) {
  const Recipe& recipe = recipes[static_cast<std::size_t>(format)];
  Ref<NSDateFormatter> formatter = makeRef<NSDateFormatter>();
  if (recipe.templateText) {
    const Ref<NSLocale> locale = NSLocale::currentLocale();
    formatter->setLocale(locale);
    formatter->setDateFormat(
        NSDateFormatter::dateFormatFromTemplate(recipe.templateText, 0, locale));
  } else {
    formatter->setDateStyle(recipe.dateStyle);
    formatter->setTimeStyle(recipe.timeStyle);
  }
  formatter->setDoesRelativeDateFormatting(format == DateFormat::shortRelativeWithTime);
  return formatter;
}

/// On the posting thread, after the default time zone has changed.
void systemTimeZoneDidChange(const Ref<NSNotification>&) {
  dispatch_sync(_zeb_dateQueue(), [] {
    const Ref<NSTimeZone> timeZone = NSTimeZone::defaultTimeZone();
    for (const Ref<NSDateFormatter>& formatter : std::span(cache().slots).first(followingCount))
      if (formatter) formatter->setTimeZone(timeZone);
  });
}

}  // namespace

const NSDateFormatter& dateFormatter(DateFormat format) {
  Cache& kept = cache();
  const auto index = static_cast<std::size_t>(format);
  Ref<NSDateFormatter>& slot = kept.slots[index];
  if (!slot) {
    const bool follows = index < followingCount;
    // Registered first, so that a change in between is not missed.
    if (follows && !kept.timeZoneObserver) {
      kept.timeZoneObserver = NSNotificationCenter::defaultCenter()->addObserverForName(
          NSSystemTimeZoneDidChangeNotification, nullptr, nullptr, systemTimeZoneDidChange);
      // Changes are watched from the first question for the system's zone on, which the formatters
      // do not ask while another default is set.
      (void)NSTimeZone::systemTimeZone();
    }
    slot = newFormatter(format);
  }
  return *slot;
}

void dropDateFormatters() { cache().slots = {}; }

}  // namespace zeb::detail
