#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Text/NSLocale.h>
#include <unicode/uloc.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace zeb {

namespace {

constexpr const char* unlocalizedName = "en_US_POSIX";
/// Longer identifiers are cut: no locale's data depends on what follows.
constexpr std::size_t maxIdentifierLength = ULOC_FULLNAME_CAPACITY - 1;

/// What the host has set, which counts more than the environment.
struct Overrides {
  detail::Lock lock;
  Ref<NSLocale> locale ZEB_GUARDED_BY(lock);
  NSArray languages ZEB_GUARDED_BY(lock);
};

Overrides& overrides() {
  static detail::NeverDestroyed<Overrides> instance;
  return *instance;
}

std::string_view environmentValue(const char* name) noexcept {
  const char* value = std::getenv(name);
  return value ? value : std::string_view();
}

/// The first of the variables that is set and not empty.
template <std::size_t count>
std::string_view firstValue(const std::array<const char*, count>& names) noexcept {
  for (const char* name : names) {
    if (const std::string_view value = environmentValue(name); !value.empty()) return value;
  }
  return {};
}

/// Without the encoding: "sr_RS.UTF-8@latin" becomes "sr_RS@latin".
std::string withoutEncoding(std::string_view value) {
  const std::size_t encoding = value.find('.');
  if (encoding == std::string_view::npos) return std::string(value);
  const std::size_t modifier = value.find('@', encoding);
  std::string result(value.substr(0, encoding));
  if (modifier != std::string_view::npos) result += value.substr(modifier);
  return result;
}

bool namesNoLanguage(std::string_view name) noexcept { return name == "C" || name == "POSIX"; }

/// Calls `query(buffer, capacity, status)`, which answers the length that it needs.
template <class Query>
std::string icuText(Query query) {
  std::array<char, ULOC_FULLNAME_CAPACITY> buffer{};
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t length =
      query(buffer.data(), static_cast<std::int32_t>(buffer.size()), &status);
  if (U_FAILURE(status) || length <= 0) return {};
  return std::string(buffer.data(), static_cast<std::size_t>(length));
}

/// ICU's spelling of an identifier; understands the modifiers of the environment, too.
std::string canonicalName(std::string_view identifier) {
  const std::string text(identifier.substr(0, maxIdentifierLength));
  return icuText([&](char* buffer, std::int32_t capacity, UErrorCode* status) {
    return uloc_canonicalize(text.c_str(), buffer, capacity, status);
  });
}

std::string languageTag(const std::string& icuName) {
  return icuText([&](char* buffer, std::int32_t capacity, UErrorCode* status) {
    return uloc_toLanguageTag(icuName.c_str(), buffer, capacity, /*strict=*/false, status);
  });
}

NSString textOrNil(const std::string& text) { return text.empty() ? NSString() : NSString(text); }

/// The language tag of one value of the environment; empty if it names no language.
std::string languageOfValue(std::string_view value) {
  const std::string name = withoutEncoding(value);
  if (name.empty() || namesNoLanguage(name)) return {};
  const std::string canonical = canonicalName(name);
  if (canonical.empty() || canonical.front() == '_') return {};
  return languageTag(canonical);
}

/// The parts between colons.
std::vector<std::string_view> partsOf(std::string_view list) {
  std::vector<std::string_view> parts;
  while (!list.empty()) {
    const std::size_t end = list.find(':');
    parts.push_back(list.substr(0, end));
    list.remove_prefix(end == std::string_view::npos ? list.size() : end + 1);
  }
  return parts;
}

NSArray environmentLanguages() {
  const std::string_view locale = firstValue(std::array{"LC_ALL", "LC_MESSAGES", "LANG"});
  std::vector<std::string_view> wanted;
  // A program that was told to speak no language must not be translated by a list that remained in
  // the environment.
  if (!namesNoLanguage(locale)) wanted = partsOf(environmentValue("LANGUAGE"));
  wanted.push_back(locale);

  NSMutableArray languages;
  for (const std::string_view value : wanted) {
    const std::string language = languageOfValue(value);
    if (!language.empty() && !languages.containsObject(NSString(language))) {
      languages.addObject(NSString(language));
    }
  }
  return languages.copy();
}

}  // namespace

Ref<NSLocale> NSLocale::currentLocale() {
  {
    Overrides& chosen = overrides();
    const detail::LockGuard guard(chosen.lock);
    if (chosen.locale) return chosen.locale;
  }
  const std::string name = withoutEncoding(firstValue(std::array{"LC_ALL", "LC_TIME", "LANG"}));
  std::string canonical = namesNoLanguage(name) ? std::string() : canonicalName(name);
  return makeRef<NSLocale>(canonical.empty() ? unlocalizedName : std::move(canonical));
}

Ref<NSLocale> NSLocale::localeWithLocaleIdentifier(const NSString& identifier) {
  if (identifier.isNil()) return nullptr;
  return makeRef<NSLocale>(canonicalName(identifier.utf8()));
}

NSArray NSLocale::preferredLanguages() {
  {
    Overrides& chosen = overrides();
    const detail::LockGuard guard(chosen.lock);
    if (chosen.languages) return chosen.languages;
  }
  return environmentLanguages();
}

void NSLocale::setCurrentLocale(const Ref<NSLocale>& locale) {
  Ref<NSLocale> replaced = locale;  // released after the lock
  Overrides& chosen = overrides();
  const detail::LockGuard guard(chosen.lock);
  std::swap(chosen.locale, replaced);
}

void NSLocale::setPreferredLanguages(const NSArray& languages) {
  NSArray replaced;  // released after the lock
  if (!languages.isNil()) {
    NSMutableArray texts;
    for (const Value& language : languages) {
      if (language.isString()) texts.addObject(language.copy());
    }
    replaced = texts.copy();
  }
  Overrides& chosen = overrides();
  const detail::LockGuard guard(chosen.lock);
  std::swap(chosen.languages, replaced);
}

NSLocaleLanguageDirection NSLocale::characterDirectionForLanguage(const NSString& languageCode) {
  if (languageCode.empty()) return NSLocaleLanguageDirection::unknown;
  const std::string name = canonicalName(languageCode.utf8());
  UErrorCode status = U_ZERO_ERROR;
  const ULayoutType layout = uloc_getCharacterOrientation(name.c_str(), &status);
  if (name.empty() || U_FAILURE(status)) return NSLocaleLanguageDirection::unknown;
  switch (layout) {
    case ULOC_LAYOUT_LTR:
      return NSLocaleLanguageDirection::leftToRight;
    case ULOC_LAYOUT_RTL:
      return NSLocaleLanguageDirection::rightToLeft;
    case ULOC_LAYOUT_TTB:
      return NSLocaleLanguageDirection::topToBottom;
    case ULOC_LAYOUT_BTT:
      return NSLocaleLanguageDirection::bottomToTop;
    default:
      return NSLocaleLanguageDirection::unknown;
  }
}

NSString NSLocale::localeIdentifier() const { return NSString(icuName_); }

NSString NSLocale::languageCode() const {
  return textOrNil(icuText([this](char* buffer, std::int32_t capacity, UErrorCode* status) {
    return uloc_getLanguage(icuName(), buffer, capacity, status);
  }));
}

NSString NSLocale::scriptCode() const {
  return textOrNil(icuText([this](char* buffer, std::int32_t capacity, UErrorCode* status) {
    return uloc_getScript(icuName(), buffer, capacity, status);
  }));
}

NSString NSLocale::countryCode() const {
  return textOrNil(icuText([this](char* buffer, std::int32_t capacity, UErrorCode* status) {
    return uloc_getCountry(icuName(), buffer, capacity, status);
  }));
}

}  // namespace zeb
