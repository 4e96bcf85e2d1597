#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

/// The normalization forms of Unicode (UAX #15). Each function answers the text itself, or a copy
/// of a mutable text, if it already has the form. Nil on nil. Unpaired surrogates stay. The time is
/// linear in the length of the text, apart from the sorting of long rows of combining marks. Texts
/// whose result would have more than 2^31 - 1 code units stay as they are. Any thread.
namespace zeb {

/// NFC: canonically composed.
[[nodiscard]] NSString precomposedStringWithCanonicalMapping(const NSString& string);
/// NFKC: the same, and characters such as ligatures and wide letters become plain ones.
[[nodiscard]] NSString precomposedStringWithCompatibilityMapping(const NSString& string);
/// NFD: canonically decomposed.
[[nodiscard]] NSString decomposedStringWithCanonicalMapping(const NSString& string);
/// NFKD: the same, and characters such as ligatures and wide letters become plain ones.
[[nodiscard]] NSString decomposedStringWithCompatibilityMapping(const NSString& string);

}  // namespace zeb
