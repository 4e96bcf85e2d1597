#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Text/NSCharacterSet.h>
#include <ZEBPlatform/Text/NSLocale.h>

#include <cstdint>

/// Comparing texts and searching in them, as readers see them: "é" is equal to "e" followed by an
/// acute accent, and "e" alone does not occur in either.
///
/// All functions take time and at most memory in proportion to the length of the texts, whatever
/// these contain. Unpaired surrogates are equal to themselves. Any thread.
namespace zeb {

/// How texts are compared; bits to combine.
enum NSStringCompareOptions : std::uint64_t {
  /// Ignores the difference between upper and lower case, by Unicode's full case folding: "ß" is
  /// equal to "SS".
  NSCaseInsensitiveSearch = 1,
  /// Compares code units, or single code points if case is ignored, instead of what readers see.
  NSLiteralSearch = 2,
  /// Finds the last occurrence instead of the first one.
  NSBackwardsSearch = 4,
  /// The occurrence must be at the beginning of the range, or with NSBackwardsSearch at its end.
  NSAnchoredSearch = 8,
  /// Ignores marks that combine with letters: "é" is equal to "e". Literal searches do not ignore
  /// them.
  NSDiacriticInsensitiveSearch = 128,
};

/// The order of the texts with NSCaseInsensitiveSearch. Texts that are not equal are ordered by the
/// code units of their folded form. Nil sorts before everything.
NSComparisonResult caseInsensitiveCompare(const NSString& string, const NSString& other);

/// The first or last occurrence of `part` inside the range. It begins and ends between characters,
/// never between a letter and a mark that combines with it. {NSNotFound, 0} if there is none, and
/// if either text is nil or empty. Throws NSException (NSRangeException) if the range reaches past
/// the end.
///
/// The case of the letter i follows `locale`, which matters in Turkish and Azerbaijani; nil means
/// no language. No collation is involved.
NSRange rangeOfString(const NSString& string, const NSString& part, std::uint64_t options,
                      NSRange range, const Ref<NSLocale>& locale = nullptr);
/// In the whole text.
NSRange rangeOfString(const NSString& string, const NSString& part, std::uint64_t options);

/// Whether the text contains `part`, ignoring case as the current locale does.
bool localizedCaseInsensitiveContainsString(const NSString& string, const NSString& part);
/// The same, ignoring diacritical marks, too: what users expect of a search field.
bool localizedStandardContainsString(const NSString& string, const NSString& part);

/// The first character of the set inside the range, or with NSBackwardsSearch the last one; with
/// NSAnchoredSearch only the character at that end of the range is looked at. The result has the
/// length 2 for a surrogate pair, else 1. {NSNotFound, 0} if there is none and if the text or the
/// set is nil. NSCaseInsensitiveSearch also accepts characters whose other case is in the set. The
/// other options have no effect. Throws NSException (NSRangeException) if the range reaches past
/// the end.
NSRange rangeOfCharacterFromSet(const NSString& string, const Ref<NSCharacterSet>& set,
                                std::uint64_t options, NSRange range);
/// In the whole text.
NSRange rangeOfCharacterFromSet(const NSString& string, const Ref<NSCharacterSet>& set,
                                std::uint64_t options = 0);

}  // namespace zeb
