#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Json/NSJSONSerialization.h>
#include <ZEBPlatform/Memory/Block.h>

#include <concepts>
#include <cstdint>

namespace zeb {

/// The platform's JSON serializer with a guard around it: its exceptions become errors, work that takes
/// longer than 10 ms on the main thread is logged, and so is parsing there at all without permission.
/// Options are those of `NSJSONReadingOptions` and `NSJSONWritingOptions`. No state; any thread.
class ZEBJSONSerialization {
 public:
  /// The document, nil on failure. What JSON can't hold gives an error (NSCocoaErrorDomain,
  /// NSPropertyListWriteInvalidError, the exception under "exception") unless `*error` holds one
  /// already, and a log line. Exceptions that are not the platform's pass through.
  static NSData dataWithJSONObject(const Value& object, std::uint64_t options,
                                   NSError* error = nullptr);

  /// As below, without permission for the main thread.
  static Value JSONObjectWithData(const NSData& data, std::uint64_t options,
                                  NSError* error = nullptr);
  /// A boolean alone does not compile: it would be taken for options, and not for the permission.
  template <std::same_as<bool> Flag>
  static Value JSONObjectWithData(const NSData& data, Flag permitMainThread,
                                  NSError* error = nullptr) = delete;

  /// The tree, nil on failure. Malformed data gives the platform reader's error. No data at all gives
  /// nil without an error, and so does nil. Parsing on the main thread without permission is logged but done; with it, only
  /// what takes longer than 10 ms is logged.
  static Value JSONObjectWithData(const NSData& data, bool permitMainThread, std::uint64_t options,
                                  NSError* error = nullptr);

  using EncodingCompletion = Block<void(const NSData& data, const NSError& error)>;
  using DecodingCompletion = Block<void(const Value& object, const NSError& error)>;

  /// The same on a thread of the pool; the completion is called once, on the main queue, with the result or
  /// the error, each nil when there is none. Object, data and completion are kept until then; mutable ones
  /// must not be changed meanwhile. A nil completion throws NSException (NSInvalidArgumentException).
  static void encodeJSONObject(const Value& object, std::uint64_t options,
                               EncodingCompletion completion);
  static void decodeJSONData(const NSData& data, std::uint64_t options,
                             DecodingCompletion completion);

  /// "ZEBJSONSerialization", with everything here by its selectors; completions and errors travel as
  /// Runtime/BlockConversion.h and Runtime/ErrorConversion.h say.
  static Class* runtimeClass();
};

}  // namespace zeb
