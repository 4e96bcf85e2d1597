#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <span>

/// Decoding of the HTML character references in texts that arrive escaped. Takes linear time. Any
/// thread may call these functions, but one at a time with one mutable text.
///
/// References are
///   - the 252 entities of HTML 4.01 and "&apos;", whose names are case-sensitive except that
///     "&LT;", "&GT;", "&AMP;" and "&QUOT;" exist, too;
///   - decimal numbers such as "&#8230;". Decimal digits of all scripts are accepted, but the value
///     is that of the ASCII digits that the number begins with;
///   - hexadecimal numbers such as "&#x2026;" or "&#X2026;". Deliberately their value is calculated
///     modulo 2^64.
/// Each ends with ";". Anything else stays as it is, as do numbers that are below 32 (also those of
/// tab and newline), surrogates or above U+10FFFF. A replacement is not scanned again: "&amp;lt;"
/// becomes "&lt;".
namespace zeb {

/// A mutable copy of the text, unescaped. Nil on nil.
[[nodiscard]] NSMutableString zeb_stringByUnescapingHTMLEntities(const NSString& string);

/// Unescapes the text in place, and answers ranges that contain the same characters as `ranges`,
/// which are boxed `NSRange`s (see `boxed`) in the escaped text, in any order. Elements that are
/// not are answered as they are. Nil on a nil text or nil
/// ranges.
///
/// Each replacement, from the first to the last, shortens the ranges that contain the whole
/// reference, moves those that begin at or after its end, and leaves all others as they are. So a
/// range that begins or ends inside a reference deliberately does not move, although the text
/// around it does.
///
/// If memory is exhausted, this throws std::bad_alloc and changes nothing.
NSArray zeb_unescapeHTMLEntitiesAdjustingTextRanges(NSMutableString string, const NSArray& ranges);
/// The same for plain ranges, which are adjusted in place: faster, because nothing is boxed.
void zeb_unescapeHTMLEntitiesAdjustingTextRanges(NSMutableString string, std::span<NSRange> ranges);

}  // namespace zeb
