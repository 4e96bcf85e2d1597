#pragma once

#include <ZEBPlatform/Foundation/ASCIICharacterSet.h>
#include <ZEBPlatform/Foundation/NSString.h>

namespace zeb {

// Percent encoding (RFC 3986, section 2.1) of text as UTF-8. Both take linear time, answer a text
// in which nothing changes without copying it, and may be called from any thread.

/// Every character that is not in `allowed` becomes "%" and two uppercase hexadecimal digits for
/// each byte of its UTF-8 form. "%" itself is encoded unless it is in the set. Nil on nil, and if
/// the text contains an unpaired surrogate, which has no UTF-8 form.
[[nodiscard]] NSString stringByAddingPercentEncodingWithAllowedCharacters(
    const NSString& string, const ASCIICharacterSet& allowed);

/// Every escape becomes its byte, and the whole is read as UTF-8. Nil on nil, for a "%" without two
/// hexadecimal digits, for bytes that are not well-formed UTF-8, and for an unpaired surrogate.
[[nodiscard]] NSString stringByRemovingPercentEncoding(const NSString& string);

}  // namespace zeb
