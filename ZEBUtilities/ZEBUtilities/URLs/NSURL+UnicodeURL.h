#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/NSURL.h>

namespace zeb {

// URLs whose hosts have names of other scripts. A URL itself is always ASCII: its host is in ASCII
// form, and what follows the host is percent-encoded. See UnicodeURLConversion.h for the rules of
// the conversion and for what it deliberately does to unusual texts. Any thread.

/// The URL that the text means, in ASCII: the strict parse (`NSURL::URLWithString`) of what
/// `ConvertUnicodeURLString` gives. Nil for a nil or empty text and if one of them gives nil.
[[nodiscard]] NSURL URLWithUnicodeString(const NSString& string);
/// The same without the check for an empty text, which gives nil, too.
[[nodiscard]] NSURL initWithUnicodeString(const NSString& string);

/// The URL's text with the host in Unicode; nil on nil, and if nothing would be left.
[[nodiscard]] NSString unicodeAbsoluteString(const NSURL& url);

/// The host in Unicode; nil on nil and without a host. Labels without a Unicode form are left out.
[[nodiscard]] NSString unicodeHost(const NSURL& url);

/// `ConvertUnicodeDomainString` to Unicode.
[[nodiscard]] NSString decodeUnicodeDomainString(const NSString& domain);

}  // namespace zeb
