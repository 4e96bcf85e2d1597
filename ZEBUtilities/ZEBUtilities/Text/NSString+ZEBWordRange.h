#pragma once

#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstddef>

/// The word at a place of a text. The functions keep no state, so that any thread may call them, as
/// long as a mutable text does not change meanwhile. A nil text counts as empty.
namespace zeb {

/// The range of the word at this index; {NSNotFound, 0} if there is none, and if the index is
/// negative or greater than the length of the text. The end of the text counts as an index of the
/// last word. Marks of text direction at the index (U+061C, U+200E, U+200F, U+202A to U+202E,
/// U+2066 to U+2069) are skipped backwards.
///
/// Words are those between the word boundaries of Unicode (UAX #29). Three properties are
/// deliberate: at most 20 code units on each side of the index are looked at, so that a longer word
/// is cut there; numbers and words that end with digits are no words; and a mark behind a word
/// belongs to it.
NSRange wordRangeForIndex(const NSString& string, std::ptrdiff_t index);

/// The same, but words that are connected by underscores count as one word, as in user names, with
/// the underscores around them. Underscores alone count, too. Words that touch each other without
/// a space between are connected as well, so that a word of any length is found as a whole. The
/// time is linear in the length of the result.
NSRange wordRangeIncludingUnderscoreForIndex(const NSString& string, std::ptrdiff_t index);

/// The two steps of the function above: the range, extended by the underscores and words directly
/// before it, or after it.
NSRange _zeb_wordRangeExpandLeft(const NSString& string, NSRange range);
NSRange _zeb_wordRangeExpandRight(const NSString& string, NSRange range);

}  // namespace zeb
