#pragma once

#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Text/NSCharacterSet.h>
#include <ZEBPlatform/Text/NSString+Searching.h>

#include <cstddef>
#include <cstdint>

/// Cleaning and testing of what people type, of display names and of identifiers. A nil text counts
/// as empty; functions that answer a text answer nil for it. Indexes and lengths count UTF-16 code
/// units unless a function says code points. Any thread may call these functions, as long as a
/// mutable text does not change meanwhile. White space is `whitespaceAndNewlineCharacterSet`.
namespace zeb {

/// The text itself.
NSString stringValue(const NSString& string);

/// Whether the text has a character that is not white space.
bool isNotEmptyAfterTrimmingWhitespace(const NSString& string);

/// Equality as `caseInsensitiveCompare` reports it; false for a nil argument.
bool zeb_isCaseInsensitiveSameAsString(const NSString& string, const NSString& other);
/// As `NSString::containsString`, which compares code units: "é" in one unit does not occur in "é"
/// in two. The localized test below finds it. False for a nil argument.
bool zeb_containsString(const NSString& string, const NSString& part);
/// As `localizedCaseInsensitiveContainsString`; false for a nil argument.
bool zeb_localizedCaseInsensitiveContainsString(const NSString& string, const NSString& part);
/// Whether the text begins with the prefix, ignoring case. False for a nil or empty prefix.
bool zeb_hasPrefixIgnoringCase(const NSString& string, const NSString& prefix);
/// Whether the text contains each of the words of the search text, ignoring case as the current
/// locale does. White space other than line ends separates words. So a search text of spaces alone
/// matches every text. False for a nil or empty search text.
bool zeb_matchesPartialsSearchString(const NSString& string, const NSString& search);

/// Whether the text has a character that shows: one that is neither white space, nor a control
/// character, nor illegal, nor ignorable. The ignorable ones are a fixed table: those of the
/// property Default_Ignorable_Code_Point in Unicode 9.
///
/// Deliberately, an unpaired high surrogate shows nothing and hides the code unit after it, while
/// an unpaired low surrogate shows.
bool zeb_containsPrintableCharacters(const NSString& string);
bool containsPrintableCharacters(const char16_t* buffer, std::size_t length);
/// The fixed table of ignorable characters.
const Ref<NSCharacterSet>& DefaultIgnorableCodePointCharacterSet();

/// Whether all characters are decimal digits, of any script, and there is at least one.
bool zeb_containsOnlyNumbers(const NSString& string);
/// The same with the digits 0 to 9, a to f and A to F.
bool zeb_containsOnlyHexNumbers(const NSString& string);
/// The number that the hexadecimal digits at the beginning of the text mean, modulo 2^64; 0 if it
/// does not begin with one. There is no prefix: "0x1F" gives 0, and "1Fz9" gives 31.
std::uint64_t zeb_hexIntegerValue(const NSString& string);

/// The number of code points of the text in the canonically composed form (NFC). An unpaired
/// surrogate counts as one.
std::size_t zeb_lengthInCodePoints(const NSString& string);

/// The run of characters of the set that begins at the first one inside the range, or with
/// NSBackwardsSearch ends at the last one. It ends at the ends of the range. {NSNotFound, 0} if
/// there is none, if the range is empty or begins at NSNotFound or past the end; a range that
/// reaches past the end is cut. The options, of `NSStringCompareOptions`, apply to the search for
/// the first character.
///
/// Deliberately, the run is extended by single code units: where the first character is a surrogate
/// pair, the run is empty, at the pair or with NSBackwardsSearch after the high surrogate.
NSRange zeb_rangeOfCharactersFromSet(const NSString& string, const Ref<NSCharacterSet>& set);
NSRange zeb_rangeOfCharactersFromSet(const NSString& string, const Ref<NSCharacterSet>& set,
                                     std::uint64_t options);
NSRange zeb_rangeOfCharactersFromSet(const NSString& string, const Ref<NSCharacterSet>& set,
                                     std::uint64_t options, NSRange range);

/// The SHA-1 digest of the text's UTF-8 form in lowercase hexadecimal digits.
[[nodiscard]] NSString zeb_SHA1HashAsHexStringValue(const NSString& string);

/// Each run of what "\s" matches in a regular expression, line ends included, becomes one no-break
/// space (U+00A0). A run of tens of millions of characters exceeds the limits of regular
/// expressions and leaves the text as it is.
[[nodiscard]] NSString zeb_stringByConvertingWhitespaceToNonbreaking(const NSString& string);

/// The text itself if there is nothing to remove.
[[nodiscard]] NSString zeb_stringByTrimmingWhitespace(const NSString& string);
[[nodiscard]] NSString zeb_stringByTrimmingLeadingWhitespace(const NSString& string);
[[nodiscard]] NSString zeb_stringByTrimmingTrailingWhitespace(const NSString& string);
/// Removes one "/" from the end, also where there are two.
[[nodiscard]] NSString zeb_stringByTrimmingTrailingSlash(const NSString& string);
/// Removes one "#" from the beginning, also where there are two.
[[nodiscard]] NSString zeb_stringByTrimmingLeadingOctothorpe(const NSString& string);

/// A test, always the same one, that is true of texts with a character that is not white space.
const Block<bool(const NSString& string)>& zeb_rejectEmptyStrippedStringsBlock();

}  // namespace zeb
