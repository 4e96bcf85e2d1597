#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/Value.h>

#include <cstdint>

namespace zeb {

/// How JSON is read; bits to combine.
enum NSJSONReadingOptions : std::uint64_t {
  /// Arrays and dictionaries of the result can be changed in place.
  NSJSONReadingMutableContainers = 1,
  /// Strings of the result can be changed in place.
  NSJSONReadingMutableLeaves = 2,
  /// The root may be anything, not only an array or a dictionary.
  NSJSONReadingFragmentsAllowed = 4,
};

/// How JSON is written; bits to combine.
enum NSJSONWritingOptions : std::uint64_t {
  /// With line breaks, and two spaces for each level (up to 32 levels).
  NSJSONWritingPrettyPrinted = 1,
  /// Dictionaries in the order of their keys' code units.
  NSJSONWritingSortedKeys = 2,
  /// The root may be anything, not only an array or a dictionary.
  NSJSONWritingFragmentsAllowed = 4,
  /// "/" is written without a backslash.
  NSJSONWritingWithoutEscapingSlashes = 8,
};

/// The platform's JSON (RFC 8259) reader and writer. May be called from any thread, also while the
/// process exits. Has no state except working memory: a thread that has read a document keeps up to
/// 1 MiB until it ends, and for large documents all threads together keep at most 32 MiB more.
class NSJSONSerialization {
 public:
  /// Reads one document. Nil and an error (NSCocoaErrorDomain, NSPropertyListReadCorruptError) when
  /// it is malformed. The description contains the line, the column in characters (both from 1) and
  /// the byte offset, which is also a number under NSJSONSerializationErrorIndexKey. Nil and empty
  /// data are malformed too.
  ///
  /// Accepts UTF-8, UTF-16 and UTF-32 of both byte orders, with or without byte-order mark.
  /// Integers stay exact as signed or unsigned 64-bit numbers; larger ones, fractions and -0 become
  /// the nearest double, and a number beyond the range of doubles is an error. Of equal keys the
  /// last one's value wins, at the first one's position. Unpaired escaped surrogates are kept.
  /// Nesting deeper than 512 levels is an error. Uses at most 48 times the data's size in memory
  /// (64 times with mutable options), and a few KiB.
  ///
  /// Without mutable options, the result's strings and collections share the document's memory,
  /// which is freed with the last of them: see `Value::detachedCopy`.
  static Value JSONObjectWithData(const NSData& data, std::uint64_t options,
                                  NSError* error = nullptr);

  /// Writes one document as UTF-8: compact, in the dictionaries' order, doubles with the fewest
  /// digits that read back as the same number, "/" escaped as "\/", unpaired surrogates escaped as
  /// \uXXXX.
  ///
  /// What JSON cannot represent throws NSException (NSInvalidArgumentException): not-a-number and
  /// infinities, keys that are no strings, values other than strings, numbers, arrays, dictionaries
  /// and null, and, unless fragments are allowed, a root that is neither array nor dictionary.
  /// Nesting deeper than 512 levels, which could not be read back, returns nil and an error
  /// (NSPropertyListWriteInvalidError).
  static NSData dataWithJSONObject(const Value& object, std::uint64_t options,
                                   NSError* error = nullptr);

  /// Whether `dataWithJSONObject` can write the object without options.
  static bool isValidJSONObject(const Value& object);
};

/// Key in a reading error's details: the byte offset of the fault, as a number.
extern const char* const NSJSONSerializationErrorIndexKey;

}  // namespace zeb
