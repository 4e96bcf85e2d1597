#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

namespace zeb {

// Hosts between their ASCII form, which machines resolve, and Unicode, which people read, by IDNA
// (RFC 3490; see <IDN/IDNADomains.h>). Nothing is reported, and nil gives nil. Linear time, any
// thread.

/// The domain in ASCII or in Unicode; the string itself if it cannot be converted, as when it is
/// longer than 1024 units.
///
/// Deliberately the two directions treat a label that cannot be converted differently, one with "_"
/// for example: in ASCII the whole domain then stays unconverted, but in Unicode only this label is
/// left out and its full stop stays. So "a_b.example" becomes ".example", an IPv6 address becomes
/// nothing, and an ACE label with uppercase letters is left out, too.
[[nodiscard]] NSString ConvertUnicodeDomainString(const NSString& string, bool toASCII);

/// The URL with its host converted. Scheme, user and password are copied. What follows the host is
/// decoded and percent-encoded again, so that it has one form; it stays encoded once more if it
/// cannot be decoded. Nil if the result is empty or contains an unpaired surrogate.
///
/// The text is divided without being parsed. Deliberately:
/// - The host begins after the first "//" that follows the first ":", wherever this is, and ends at
///   the next one of ":/?#". Without "//" it begins after the ":", so that "mailto:a@b" has the
///   host "b", and "tel:+1" the host "+1", which has no Unicode form and is left out.
/// - User information ends at the first "@".
/// - "#", "[" and "]" are not encoded after the host, and escapes of delimiters are decoded:
///   "%2F", "%3F", "%23", "%26" and "%3D" become "/", "?", "#", "&" and "=" and can change what the
///   URL means, for instance the values of its query.
[[nodiscard]] NSString ConvertUnicodeURLString(const NSString& string, bool toASCII);

}  // namespace zeb
