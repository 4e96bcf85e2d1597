#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/Value.h>

#include <cstddef>
#include <cstdint>

namespace zeb {

/// The forms of property lists.
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
/// Objects in one document. A binary document may also have no more objects than bytes.
inline constexpr std::size_t NSPropertyListMaximumObjectCount = 1'000'000;
/// Total of text and data in a binary document, as a multiple of the document's size.
inline constexpr std::size_t NSPropertyListMaximumExpansion = 32;

/// Reader of property lists, XML and binary: Info.plist files above all. No state; any thread.
class NSPropertyListSerialization {
 public:
  /// Reads one document. Nil and an error (NSCocoaErrorDomain, NSPropertyListReadCorruptError, with
  /// a description) when it is malformed, beyond the limits above, or of another form. Nil and
  /// empty data are malformed too. `format` receives the document's form on success.
  ///
  /// Strings, data, booleans, dates, arrays and dictionaries become values of the same kind.
  /// Integers become signed 64-bit numbers or, if larger, unsigned ones; reals become doubles; an
  /// archive's UID becomes the dictionary {"CF$UID": number}. Of equal keys the last one's value
  /// wins.
  ///
  /// XML must be well-formed, in UTF-8, UTF-16, ISO 8859-1 or ASCII as it declares, with one value
  /// in <plist> or by itself. A document type may be named but must not contain declarations, so
  /// that only XML's own entities exist. Integers are decimal, or hexadecimal after "0x"; dates
  /// have the form 2001-01-02T03:04:05Z. Integers beyond 64 bits and reals beyond the range of
  /// doubles are errors. The time taken is proportional to the number of objects and bytes within
  /// the limits.
  [[nodiscard]] static Value propertyListWithData(const NSData& data, std::uint64_t options = 0,
                                                  NSPropertyListFormat* format = nullptr,
                                                  NSError* error = nullptr);
};

}  // namespace zeb
