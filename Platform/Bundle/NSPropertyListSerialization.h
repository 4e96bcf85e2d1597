#pragma once

#include <Foundation/NSData.h>
#include <Foundation/NSError.h>
#include <Foundation/Value.h>

#include <cstddef>
#include <cstdint>

namespace zeb {

/// The forms that property lists come in.
enum NSPropertyListFormat : std::uint64_t {
  NSPropertyListXMLFormat_v1_0 = 100,
  NSPropertyListBinaryFormat_v1_0 = 200,
};

/// How property lists are read.
enum NSPropertyListReadOptions : std::uint64_t {
  NSPropertyListImmutable = 0,
  /// Arrays and dictionaries of the result can be changed in place.
  NSPropertyListMutableContainers = 1,
};

/// Limits of what is read: a document beyond one of them is an error. Objects and bytes of a binary
/// document count as often as they are referred to.
inline constexpr std::size_t NSPropertyListMaximumSize = std::size_t{16} << 20;  ///< bytes
inline constexpr std::size_t NSPropertyListMaximumDepth = 512;
/// And never more than the document has bytes.
inline constexpr std::size_t NSPropertyListMaximumObjectCount = 1'000'000;
/// Times the document's size: text and data that a binary document may come to.
inline constexpr std::size_t NSPropertyListMaximumExpansion = 32;

/// Reader of property lists, XML and binary: Info.plist files above all. No state; any thread.
class NSPropertyListSerialization {
 public:
  /// Reads one document. Nil and an error (NSCocoaErrorDomain, NSPropertyListReadCorruptError, with a
  /// description) when it is malformed, beyond the limits above, or of another form; no data at all is
  /// malformed too. `format` gets the document's form on success.
  ///
  /// Strings, data, booleans, dates, arrays and dictionaries become what they are; integers signed
  /// 64-bit numbers or, above these, unsigned ones; reals doubles; an archive's UID the dictionary
  /// {"CF$UID": number}. Of equal keys the last one's value wins. Dates beyond the years 1933 to 2069 are
  /// read to the second. XML is UTF-8; a number in it that is none reads as 0.
  static Value propertyListWithData(const NSData& data, std::uint64_t options = 0,
                                    NSPropertyListFormat* format = nullptr,
                                    NSError* error = nullptr);
};

}  // namespace zeb
