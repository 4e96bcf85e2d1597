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
  /// Line breaks, and two spaces a level (up to 32).
  NSJSONWritingPrettyPrinted = 1,
  /// Dictionaries in the order of their keys' code units.
  NSJSONWritingSortedKeys = 2,
  /// The root may be anything, not only an array or a dictionary.
  NSJSONWritingFragmentsAllowed = 4,
  /// "/" stands as it is, without a backslash.
  NSJSONWritingWithoutEscapingSlashes = 8,
};

/// The platform's JSON (RFC 8259) reader and writer. Any thread, also while the process exits. No state but
/// working memory: a thread that has read keeps up to 1 MiB of it until it ends, and for large documents all
/// threads together keep at most 32 MiB more.
class NSJSONSerialization {
 public:
  /// Reads one document. Nil and an error (NSCocoaErrorDomain, NSPropertyListReadCorruptError) when
  /// it is malformed; the description tells the line, the column in characters (both from 1) and the
  /// byte offset, which also stands as a number under NSJSONSerializationErrorIndexKey. No data at all
  /// is malformed too.
  ///
  /// UTF-8 with or without byte-order mark, UTF-16 and UTF-32 of both byte orders. Integers stay exact
  /// as signed or unsigned 64-bit numbers; larger ones, fractions and -0 become the nearest double, and
  /// a number beyond every double is an error. Of equal keys the last one's value wins, at the first
  /// one's place. Escaped surrogates survive unpaired. Nesting deeper than 512 is an error. Takes at
  /// most 48 times the data's size in memory (64 times with mutable options), and a few KiB.
  ///
  /// Without mutable options, the result's strings and collections share the document's memory, which
  /// goes when the last of them does: see `Value::detachedCopy`.
  static Value JSONObjectWithData(const NSData& data, std::uint64_t options,
                                  NSError* error = nullptr);

  /// Writes one document as UTF-8: compact, in the dictionaries' order, doubles with the fewest digits
  /// that read back the same, "/" escaped as "\/", unpaired surrogates escaped as \uXXXX.
  ///
  /// What JSON can't hold throws NSException (NSInvalidArgumentException): not-a-number and infinities,
  /// keys that are no strings, values that are no string, number, array, dictionary or null, and, unless
  /// fragments are allowed, a root that is neither array nor dictionary. Nesting deeper than 512, which
  /// could not be read back, answers nil and an error (NSPropertyListWriteInvalidError).
  static NSData dataWithJSONObject(const Value& object, std::uint64_t options,
                                   NSError* error = nullptr);

  /// Whether `dataWithJSONObject` could write it, without options.
  static bool isValidJSONObject(const Value& object);
};

/// Key of a reading error's details: the byte offset of the fault, as a number.
extern const char* const NSJSONSerializationErrorIndexKey;

}  // namespace zeb
