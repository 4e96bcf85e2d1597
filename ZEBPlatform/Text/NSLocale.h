#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>

#include <string>
#include <utility>

namespace zeb {

/// The direction in which the lines of a language run.
enum class NSLocaleLanguageDirection {
  unknown,
  leftToRight,
  rightToLeft,
  topToBottom,
  bottomToTop,
};

/// A language and region, whose rules and words text and dates follow. Immutable; any thread.
///
/// The user's locale comes from the environment. What numbers and dates look like is the first of
/// LC_ALL, LC_TIME and LANG that is set and not empty. Which language the user reads is, from the
/// most wanted one, the list of LANGUAGE followed by the first of LC_ALL, LC_MESSAGES and LANG.
/// Encodings are ignored. Modifiers that choose a script or a variant count ("sr_RS@latin" is
/// "sr_Latn_RS"), others such as "@euro" are ignored.
///
/// The values "C" and "POSIX", with or without an encoding, and values that are no identifier of a
/// language name no language: then the current locale is "en_US_POSIX", and the value contributes
/// no preferred language. As in other programs, LANGUAGE is ignored if the other variables choose
/// "C" or "POSIX"; it counts if none of them is set. A host that knows better overrides both.
class NSLocale : public NSObject {
 public:
  /// The user's locale at the time of the call: the host's, else the environment's. The variables
  /// are read on every call, because a program may change them; no other thread may change them
  /// during the call.
  static Ref<NSLocale> currentLocale();
  /// For an identifier such as "de_AT", "ar-EG" or "en_US_POSIX". Deprecated codes are replaced
  /// ("iw" by "he"). An unknown language or region is kept as it is, and behaves as the nearest
  /// locale that is known. The identifier ends before the first character that is not printable
  /// ASCII (such as a NUL or a space), and after 156 characters. Nil for nil.
  static Ref<NSLocale> localeWithLocaleIdentifier(const NSString& identifier);

  /// The languages that the user reads, the most wanted one first, as codes such as "pt-BR" or
  /// "zh-Hant", each once. Empty if the environment names none.
  static NSArray preferredLanguages();

  /// Makes this the current locale, whatever the environment says, until nil is set.
  static void setCurrentLocale(const Ref<NSLocale>& locale);
  /// Replaces the preferred languages, whatever the environment says, until nil is set. Elements
  /// that are not strings, and empty strings, are left out.
  static void setPreferredLanguages(const NSArray& languages);

  /// The direction of the script in which the language is usually written in its region, or of the
  /// script that the code names. `unknown` for nil, and for what is no known language or script.
  static NSLocaleLanguageDirection characterDirectionForLanguage(const NSString& languageCode);

  /// The canonical form, such as "de_AT".
  NSString localeIdentifier() const;
  /// Such as "de"; nil if there is none.
  NSString languageCode() const;
  /// Such as "Hant"; nil if the identifier has none.
  NSString scriptCode() const;
  /// Such as "AT"; nil if the identifier has none.
  NSString countryCode() const;

  /// For this library's other classes only.
  explicit NSLocale(std::string icuName) : icuName_(std::move(icuName)) {}
  const char* icuName() const noexcept { return icuName_.c_str(); }

 private:
  /// The canonical identifier, which is plain ASCII.
  std::string icuName_;
};

}  // namespace zeb
