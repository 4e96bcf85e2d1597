#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/NSOrderedSet.h>
#include <ZEBPlatform/Text/NSLocale.h>
#include <unicode/localebuilder.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include <algorithm>
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

/// ICU's spelling of an identifier, with deprecated codes replaced: "iw-IL" becomes "he_IL". What
/// follows a character that is not printable ASCII is cut off. Empty if nothing is left.
std::string canonicalName(std::string_view identifier) {
  std::string text(identifier.substr(0, maxIdentifierLength));
  const auto isPrintable = [](char character) { return character > ' ' && character < 0x7F; };
  text.erase(std::find_if_not(text.begin(), text.end(), isPrintable), text.end());
  const icu::Locale locale = icu::Locale::createCanonical(text.c_str());
  return locale.isBogus() ? std::string() : locale.getName();
}

/// Empty if the name has no well-formed language.
std::string languageTag(const std::string& icuName) {
  UErrorCode status = U_ZERO_ERROR;
  std::string tag = icu::Locale(icuName.c_str()).toLanguageTag<std::string>(status);
  return U_FAILURE(status) || tag.starts_with("und") ? std::string() : tag;
}

NSString textOrNil(const char* text) { return *text ? NSString(text) : NSString(); }

/// A value of the environment, "language_REGION.encoding@modifier", without its encoding.
struct EnvironmentLocale {
  explicit EnvironmentLocale(std::string_view value) {
    const std::size_t at = value.find('@');
    if (at != value.npos) modifier = value.substr(at + 1);
    name = value.substr(0, at);
    name = name.substr(0, name.find('.'));
  }

  bool isUnlocalized() const noexcept { return name == "C" || name == "POSIX"; }
  std::string icuName() const;

  std::string_view name;
  std::string_view modifier;
};

/// Empty if the value names no language. Of the modifiers those count that choose a script or a
/// variant of the language, and lists of ICU's keywords; "euro" and the like say nothing today.
std::string EnvironmentLocale::icuName() const {
  if (name.empty() || isUnlocalized()) return {};
  const bool hasKeywords = modifier.find('=') != modifier.npos;
  std::string identifier(name.substr(0, maxIdentifierLength));
  if (hasKeywords) identifier.append("@").append(modifier);
  const std::string plainName = canonicalName(identifier);
  if (languageTag(plainName).empty() || hasKeywords) {
    return languageTag(plainName).empty() ? std::string() : plainName;
  }

  constexpr std::pair<std::string_view, const char*> scripts[] = {
      {"latin", "Latn"}, {"iqtelif", "Latn"}, {"cyrillic", "Cyrl"}, {"devanagari", "Deva"}};
  icu::LocaleBuilder builder;
  builder.setLocale(icu::Locale(plainName.c_str()));
  for (const auto& [wanted, script] : scripts) {
    if (modifier == wanted) builder.setScript(script);
  }
  if (modifier == "valencia" || modifier == "saaho") {
    builder.setVariant({modifier.data(), static_cast<std::int32_t>(modifier.size())});
  }
  UErrorCode status = U_ZERO_ERROR;
  const icu::Locale locale = builder.build(status);
  return U_FAILURE(status) ? plainName : locale.getName();
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
  if (!EnvironmentLocale(locale).isUnlocalized()) wanted = partsOf(environmentValue("LANGUAGE"));
  wanted.push_back(locale);

  NSMutableOrderedSet languages;
  for (const std::string_view value : wanted) {
    const std::string language = languageTag(EnvironmentLocale(value).icuName());
    if (!language.empty()) languages.addObject(NSString(language));
  }
  return languages.array();
}

}  // namespace

Ref<NSLocale> NSLocale::currentLocale() {
  {
    Overrides& chosen = overrides();
    const detail::LockGuard guard(chosen.lock);
    if (chosen.locale) return chosen.locale;
  }
  std::string name =
      EnvironmentLocale(firstValue(std::array{"LC_ALL", "LC_TIME", "LANG"})).icuName();
  return makeRef<NSLocale>(name.empty() ? unlocalizedName : std::move(name));
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
      if (!NSString(language).empty()) texts.addObject(language.copy());
    }
    replaced = texts.copy();
  }
  Overrides& chosen = overrides();
  const detail::LockGuard guard(chosen.lock);
  std::swap(chosen.languages, replaced);
}

// The orientation in ICU's locale data is not used: it lacks many languages, such as Divehi, and
// ignores scripts without data of their own, such as Azerbaijani in Arabic script.
NSLocaleLanguageDirection NSLocale::characterDirectionForLanguage(const NSString& languageCode) {
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale locale(canonicalName(languageCode.utf8()).c_str());
  // ICU would complete a missing language to English.
  if (!*locale.getLanguage() && !*locale.getScript()) return NSLocaleLanguageDirection::unknown;
  locale.addLikelySubtags(status);
  const std::int32_t value = u_getPropertyValueEnum(UCHAR_SCRIPT, locale.getScript());
  if (U_FAILURE(status) || value < 0) return NSLocaleLanguageDirection::unknown;
  const auto script = static_cast<UScriptCode>(value);
  if (uscript_isRightToLeft(script)) return NSLocaleLanguageDirection::rightToLeft;
  const bool isVertical = script == USCRIPT_MONGOLIAN || script == USCRIPT_PHAGS_PA;
  return isVertical ? NSLocaleLanguageDirection::topToBottom
                    : NSLocaleLanguageDirection::leftToRight;
}

NSString NSLocale::localeIdentifier() const { return NSString(icuName_); }

NSString NSLocale::languageCode() const { return textOrNil(icu::Locale(icuName()).getLanguage()); }

NSString NSLocale::scriptCode() const { return textOrNil(icu::Locale(icuName()).getScript()); }

NSString NSLocale::countryCode() const { return textOrNil(icu::Locale(icuName()).getCountry()); }

}  // namespace zeb
