#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/Linux/detail/FileReading.h>
#include <ZEBPlatform/Text/RuleTimeZonePrivate.h>
#include <ZEBPlatform/Text/TimeZoneDatabasePrivate.h>
#include <unicode/strenum.h>
#include <unicode/ucal.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <utility>

namespace zeb::detail {

namespace {

/// The largest real files have some kilobytes, and the list of all zones a hundred.
constexpr std::size_t maxFileSize = 1 << 20;
constexpr std::size_t maxNameLength = 255;
constexpr std::int64_t secondsPerMinute = 60;
constexpr std::int64_t secondsPerHour = 3600;
constexpr std::int64_t maxFixedOffset = 18 * secondsPerHour;
/// The database as one text, which also states its version.
constexpr const char* listName = "/tzdata.zi";

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

/// Whether the name can be one of the database; then it leads to no file outside its folder.
bool isPossibleName(std::string_view name) noexcept {
  return !name.empty() && name.size() <= maxNameLength && name.front() != '/' &&
         std::ranges::all_of(name, [](char c) {
           return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '/' ||
                  c == '_' || c == '+' || c == '-';
         });
}

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = (std::min)(text.find('\n'), text.size());
    lines.push_back(text.substr(0, end));
    text.remove_prefix((std::min)(end + 1, text.size()));
  }
  return lines;
}

/// The word of this number in a line of the list.
std::string_view wordOf(std::string_view line, int number) noexcept {
  for (; number > 0; --number) {
    const std::size_t space = line.find(' ');
    line.remove_prefix(space == std::string_view::npos ? line.size() : space + 1);
  }
  return line.substr(0, line.find(' '));
}

icu::UnicodeString invariantText(std::string_view text) {
  return icu::UnicodeString(text.data(), static_cast<std::int32_t>(text.size()), US_INV);
}

Ref<NSTimeZone> newZone(std::string_view name, std::unique_ptr<const icu::TimeZone> zone) {
  return makeRef<NSTimeZone>(NSString(name), std::make_unique<NSTimeZone::Implementation>(
                                                 NSTimeZone::Implementation{std::move(zone)}));
}

Ref<NSTimeZone> icuZoneNamed(std::string_view name) {
  const icu::UnicodeString identifier = invariantText(name);
  UErrorCode status = U_ZERO_ERROR;
  UBool isKnown = false;
  icu::UnicodeString canonical;
  icu::TimeZone::getCanonicalID(identifier, canonical, isKnown, status);
  // ICU also understands identifiers of its own making, such as "GMT+3:15:01".
  if (U_FAILURE(status) || !isKnown) return nullptr;
  std::unique_ptr<const icu::TimeZone> zone(icu::TimeZone::createTimeZone(identifier));
  return zone ? newZone(name, std::move(zone)) : nullptr;
}

/// The offset that the digits behind "GMT" state: "+5", "+05", "+0530", "+5:30".
std::optional<std::int64_t> offsetOfText(std::string_view text) noexcept {
  if (text.empty() || (text.front() != '+' && text.front() != '-')) return std::nullopt;
  const std::int64_t sign = text.front() == '-' ? -1 : 1;
  text.remove_prefix(1);
  const std::size_t colon = text.find(':');
  std::string_view hours = text.substr(0, colon);
  std::string_view minutes;
  if (colon != std::string_view::npos) {
    minutes = text.substr(colon + 1);
    if (minutes.size() != 2) return std::nullopt;
  } else if (text.size() > 2) {
    hours = text.substr(0, text.size() - 2);
    minutes = text.substr(text.size() - 2);
  }
  if (hours.empty() || hours.size() > 2 || !std::ranges::all_of(hours, isDigit) ||
      !std::ranges::all_of(minutes, isDigit))
    return std::nullopt;
  const auto number = [](std::string_view digits) {
    std::int64_t value = 0;
    for (const char digit : digits) value = value * 10 + (digit - '0');
    return value;
  };
  if (number(minutes) >= 60) return std::nullopt;
  return sign * (number(hours) * secondsPerHour + number(minutes) * secondsPerMinute);
}

/// "+0530" or, with a separator and without needless digits, "+5:30".
std::string textOfOffset(std::int64_t seconds, bool isShort) {
  const char sign = seconds < 0 ? '-' : '+';
  const std::int64_t minutes = std::abs(seconds) / secondsPerMinute;
  if (!isShort) return formattedText("%c%02lld%02lld", {sign, minutes / 60, minutes % 60});
  std::string text = formattedText("%c%lld", {sign, minutes / 60});
  if (minutes % 60 != 0) text += formattedText(":%02lld", {minutes % 60});
  return text;
}

}  // namespace

std::string readTimeZoneFile(const std::string& path) {
  std::string content;
  readWholeFile(path, maxFileSize, content);
  return content;
}

Ref<NSTimeZone> fixedTimeZone(std::int64_t seconds) {
  if (seconds < -maxFixedOffset || seconds > maxFixedOffset) return nullptr;
  const bool isGMT = seconds == 0;
  return TimeZoneDatabase::zoneWithRules(
      NSString(isGMT ? "GMT" : "GMT" + textOfOffset(seconds, false)),
      TimeZoneRules({{static_cast<std::int32_t>(seconds), 0,
                      isGMT ? "GMT" : "GMT" + textOfOffset(seconds, true)}},
                    {}, std::nullopt));
}

TimeZoneDatabase::TimeZoneDatabase(std::string folder) : folder_(std::move(folder)) {
  constexpr std::string_view label = "# version ";
  UErrorCode status = U_ZERO_ERROR;
  const char* const icuVersion = ucal_getTZDataVersion(&status);
  const std::string list = readTimeZoneFile(folder_ + listName);
  const std::string_view firstLine = std::string_view(list).substr(0, list.find('\n'));
  // Versions such as "2025b" have the order of their texts. Files of unknown version are taken to
  // be newer, because systems update them more often than ICU.
  isNewerThanICU_ = U_FAILURE(status) || !firstLine.starts_with(label) ||
                    firstLine.substr(label.size()) >= std::string_view(icuVersion);
}

Ref<NSTimeZone> TimeZoneDatabase::zoneWithRules(const NSString& name, TimeZoneRules rules) {
  const std::string identifier = name.utf8();
  return newZone(identifier, std::make_unique<RuleTimeZone>(
                                 icu::UnicodeString::fromUTF8(identifier),
                                 std::make_shared<const TimeZoneRules>(std::move(rules))));
}

Ref<NSTimeZone> TimeZoneDatabase::zoneNamed(std::string_view name) const {
  constexpr std::string_view gmt = "GMT";
  if (!isPossibleName(name) && !name.starts_with(gmt)) return nullptr;
  if (name.starts_with(gmt)) {
    if (const std::optional<std::int64_t> offset = offsetOfText(name.substr(gmt.size())))
      return fixedTimeZone(*offset);
  }
  Ref<NSTimeZone> zone = isNewerThanICU_ ? systemZoneNamed(name) : icuZoneNamed(name);
  if (!zone) zone = isNewerThanICU_ ? icuZoneNamed(name) : systemZoneNamed(name);
  return zone;
}

Ref<NSTimeZone> TimeZoneDatabase::systemZoneNamed(std::string_view name) const {
  std::optional<TimeZoneRules> rules = timeZoneRulesFromFile(fileOfZone(name));
  return rules ? zoneWithRules(NSString(name), *std::move(rules)) : nullptr;
}

std::string TimeZoneDatabase::fileOfZone(std::string_view name) const {
  return isPossibleName(name) ? readTimeZoneFile(folder_ + '/' + std::string(name)) : "";
}

std::vector<std::string> TimeZoneDatabase::names() const {
  std::vector<std::string> zones, links;
  const std::string list = readTimeZoneFile(folder_ + listName);
  for (const std::string_view line : linesOf(list)) {
    if (line.starts_with("Z ")) zones.emplace_back(wordOf(line, 1));
    if (line.starts_with("L ")) links.emplace_back(wordOf(line, 2));
  }
  zones.insert(zones.end(), std::move_iterator(links.begin()), std::move_iterator(links.end()));
  if (!zones.empty()) return zones;

  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::StringEnumeration> known(
      icu::TimeZone::createTimeZoneIDEnumeration(UCAL_ZONE_TYPE_ANY, nullptr, nullptr, status));
  while (known && U_SUCCESS(status)) {
    const char* const name = known->next(nullptr, status);
    if (!name) break;
    zones.emplace_back(name);
  }
  return zones;
}

}  // namespace zeb::detail
