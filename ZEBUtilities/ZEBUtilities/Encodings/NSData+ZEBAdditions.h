#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSString.h>

namespace zeb {

// All of these return nil on nil and may be called from any thread. They throw std::bad_alloc if
// there is no memory for the result.

/// Two lowercase hexadecimal digits per byte; empty text for empty data. Nil if the text would be
/// longer than a string can be, 4 Gi characters.
[[nodiscard]] NSString zeb_hexStringValue(const NSData& data);

/// The bytes that hexadecimal digits of either case mean, two digits per byte. Nil if the text
/// contains anything else; empty data for an empty text.
///
/// An odd number of digits deliberately depends on how the text is stored, as in other
/// implementations of this function:
/// - Text that is stored as bytes (`NSString::isASCII`), which includes every immutable text of
///   digits, is read in place. An odd number of digits gives nil.
/// - Text that is stored as 16-bit units is copied, and "0" is put before an odd number of digits:
///   "abc" gives 0a bc. Digits are stored so only in a mutable text that has once contained a
///   character outside ASCII.
[[nodiscard]] NSData zeb_dataWithHexString(const NSString& text);

/// The bytes as UTF-8 text; nil if they are not well-formed.
[[nodiscard]] NSString zeb_UTF8String(const NSData& data);

/// The JSON document with line breaks and indentation, for diagnostics; nil if the data is not a
/// JSON array or dictionary. Parses on the calling thread, without the guards of
/// `ZEBJSONSerialization`. Joined data is joined for the parser.
[[nodiscard]] NSData zeb_prettyPrintedJSONData(const NSData& data);
[[nodiscard]] NSString zeb_prettyPrintedJSONString(const NSData& data);

}  // namespace zeb
