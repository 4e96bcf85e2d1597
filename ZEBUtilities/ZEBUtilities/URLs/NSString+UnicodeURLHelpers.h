#pragma once

#include <ZEBPlatform/Foundation/ASCIICharacterSet.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <utility>

namespace zeb {

// How texts of URLs are divided. Nil gives false and two nil strings. Linear time, any thread.

/// Whether every surrogate is paired.
bool _UnicodeURL_isValidCharacterSequence(const NSString& string) noexcept;

/// The text up to and with the first occurrence of `separator`, and the rest. The empty string and
/// the whole text if it does not occur, or if it is nil or empty.
[[nodiscard]] std::pair<NSString, NSString> _UnicodeURL_splitAfterString(const NSString& string,
                                                                         const NSString& separator);

/// The text up to the first character of the set, and the rest from there. The whole text and the
/// empty string if it contains none. Delimiters of URLs are ASCII, and so are the sets.
[[nodiscard]] std::pair<NSString, NSString> _UnicodeURL_splitBeforeCharactersInSet(
    const NSString& string, const ASCIICharacterSet& set);

}  // namespace zeb
