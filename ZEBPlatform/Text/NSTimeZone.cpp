#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBPlatform/Text/NSTimeZone.h>
#include <ZEBPlatform/Text/RuleTimeZonePrivate.h>
#include <ZEBPlatform/Text/SystemTimeZonePrivate.h>
#include <ZEBPlatform/Text/UnicodeStringPrivate.h>
#include <unicode/locid.h>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace zeb {

const char* const NSSystemTimeZoneDidChangeNotification = "NSSystemTimeZoneDidChangeNotification";

namespace {

struct Abbreviation {
  std::string_view text;
  const char* zone;
};

/// The zones that people usually mean, sorted.
constexpr Abbreviation abbreviations[] = {
    {"ADT", "America/Halifax"},    {"AKDT", "America/Anchorage"},
    {"AKST", "America/Anchorage"}, {"ART", "America/Argentina/Buenos_Aires"},
    {"AST", "America/Halifax"},    {"BRT", "America/Sao_Paulo"},
    {"BST", "Europe/London"},      {"CAT", "Africa/Harare"},
    {"CDT", "America/Chicago"},    {"CEST", "Europe/Paris"},
    {"CET", "Europe/Paris"},       {"CLT", "America/Santiago"},
    {"COT", "America/Bogota"},     {"CST", "America/Chicago"},
    {"EAT", "Africa/Nairobi"},     {"EDT", "America/New_York"},
    {"EEST", "Europe/Athens"},     {"EET", "Europe/Athens"},
    {"EST", "America/New_York"},   {"GMT", "GMT"},
    {"GST", "Asia/Dubai"},         {"HKT", "Asia/Hong_Kong"},
    {"HST", "Pacific/Honolulu"},   {"ICT", "Asia/Bangkok"},
    {"IRST", "Asia/Tehran"},       {"IST", "Asia/Kolkata"},
    {"JST", "Asia/Tokyo"},         {"KST", "Asia/Seoul"},
    {"MDT", "America/Denver"},     {"MSK", "Europe/Moscow"},
    {"MST", "America/Denver"},     {"NZDT", "Pacific/Auckland"},
    {"NZST", "Pacific/Auckland"},  {"PDT", "America/Los_Angeles"},
    {"PET", "America/Lima"},       {"PHT", "Asia/Manila"},
    {"PKT", "Asia/Karachi"},       {"PST", "America/Los_Angeles"},
    {"SGT", "Asia/Singapore"},     {"UTC", "UTC"},
    {"WAT", "Africa/Lagos"},       {"WEST", "Europe/Lisbon"},
    {"WET", "Europe/Lisbon"},      {"WIT", "Asia/Jakarta"},
};

double millisecondsOf(const NSDate& date) {
  return (date.isNil() ? NSDate::date() : date).timeIntervalSince1970() * 1000;
}

}  // namespace

NSTimeZone::NSTimeZone(const NSString& name, std::unique_ptr<const Implementation> implementation)
    : name_(name.copy()), implementation_(std::move(implementation)) {}

NSTimeZone::~NSTimeZone() = default;

Ref<NSTimeZone> NSTimeZone::timeZoneWithName(const NSString& name) {
  const NSString narrow = name.copy();  // a mutable text may hold ASCII in 16-bit units
  return narrow.isASCII() ? detail::timeZoneDatabase()->zoneNamed(narrow.asciiView()) : nullptr;
}

Ref<NSTimeZone> NSTimeZone::timeZoneWithAbbreviation(const NSString& abbreviation) {
  const NSString narrow = abbreviation.copy();
  if (!narrow.isASCII()) return nullptr;
  const std::string_view text = narrow.asciiView();
  const auto known = std::ranges::lower_bound(abbreviations, text, {}, &Abbreviation::text);
  if (known != std::end(abbreviations) && known->text == text) return timeZoneWithName(known->zone);
  return text.starts_with("GMT") ? timeZoneWithName(narrow) : nullptr;
}

Ref<NSTimeZone> NSTimeZone::timeZoneForSecondsFromGMT(std::int64_t seconds) {
  return detail::fixedTimeZone(seconds);
}

NSArray NSTimeZone::knownTimeZoneNames() {
  std::vector<std::string> names = detail::timeZoneDatabase()->names();
  std::ranges::sort(names);
  NSMutableArray result;
  for (const std::string& name : names) result.addObject(NSString(name));
  return result.copy();
}

Ref<NSTimeZone> NSTimeZone::systemTimeZone() { return detail::systemTimeZone(); }

void NSTimeZone::resetSystemTimeZone() { detail::forgetSystemTimeZone(); }

void NSTimeZone::systemTimeZoneDidChange() {
  detail::refreshSystemTimeZone();
  NSNotificationCenter::defaultCenter()->postNotificationName(
      NSSystemTimeZoneDidChangeNotification);
}

Ref<NSTimeZone> NSTimeZone::defaultTimeZone() { return detail::defaultTimeZone(); }

void NSTimeZone::setDefaultTimeZone(const Ref<NSTimeZone>& timeZone) {
  detail::setDefaultTimeZone(timeZone);
}

NSString NSTimeZone::abbreviation(const NSDate& date) const {
  const icu::TimeZone& zone = *implementation_->zone;
  if (const auto* const rules = dynamic_cast<const detail::RuleTimeZone*>(&zone))
    return NSString(
        rules->rules().typeAt(detail::secondsOfMilliseconds(millisecondsOf(date))).abbreviation);
  icu::UnicodeString text;
  zone.getDisplayName(isDaylightSavingTime(date), icu::TimeZone::SHORT, icu::Locale::getEnglish(),
                      text);
  return detail::nsString(text);
}

std::int64_t NSTimeZone::secondsFromGMT(const NSDate& date) const {
  std::int32_t rawOffset = 0, saving = 0;
  UErrorCode status = U_ZERO_ERROR;
  implementation_->zone->getOffset(millisecondsOf(date), false, rawOffset, saving, status);
  return U_FAILURE(status) ? 0 : (rawOffset + saving) / 1000;
}

bool NSTimeZone::isDaylightSavingTime(const NSDate& date) const {
  std::int32_t rawOffset = 0, saving = 0;
  UErrorCode status = U_ZERO_ERROR;
  implementation_->zone->getOffset(millisecondsOf(date), false, rawOffset, saving, status);
  return U_SUCCESS(status) && saving != 0;
}

bool NSTimeZone::isEqual(const NSObject& other) const {
  const auto* const zone = dynamic_cast<const NSTimeZone*>(&other);
  return zone && zone->name_ == name_ &&
         implementation_->zone->hasSameRules(*zone->implementation_->zone);
}

std::size_t NSTimeZone::hash() const noexcept { return std::hash<NSString>()(name_); }

std::string NSTimeZone::description() const { return name_.utf8(); }

}  // namespace zeb
