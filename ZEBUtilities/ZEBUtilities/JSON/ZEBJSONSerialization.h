#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Json/NSJSONSerialization.h>
#include <ZEBPlatform/Memory/Block.h>

#include <concepts>
#include <cstdint>

namespace zeb {

/// The platform's JSON serializer with guards: its exceptions become errors, work that takes longer
/// than 10 ms on the main thread is logged, and so is any parsing there without permission. Options
/// are those of `NSJSONReadingOptions` and `NSJSONWritingOptions`. Has no state; may be used from
/// any thread.
class ZEBJSONSerialization {
 public:
  /// The document; nil on failure. What JSON cannot represent gives an error (NSCocoaErrorDomain,
  /// NSPropertyListWriteInvalidError, with the exception under "exception") unless `*error`
  /// contains one already, and a log line. Exceptions other than NSException pass through.
  static NSData dataWithJSONObject(const Value& object, std::uint64_t options,
                                   NSError* error = nullptr);

  /// The same as below, without permission for the main thread.
  static Value JSONObjectWithData(const NSData& data, std::uint64_t options,
                                  NSError* error = nullptr);
  /// Deleted, because a single boolean would be taken for the options instead of the permission.
  template <std::same_as<bool> Flag>
  static Value JSONObjectWithData(const NSData& data, Flag permitMainThread,
                                  NSError* error = nullptr) = delete;

  /// The tree; nil on failure. Malformed data gives the platform reader's error. Nil and empty data
  /// give nil without an error. Parsing on the main thread without permission is logged, but done.
  /// With permission, it is logged only if it takes longer than 10 ms.
  static Value JSONObjectWithData(const NSData& data, bool permitMainThread, std::uint64_t options,
                                  NSError* error = nullptr);

  using EncodingCompletion = Block<void(const NSData& data, const NSError& error)>;
  using DecodingCompletion = Block<void(const Value& object, const NSError& error)>;

  /// The same on a thread of the pool. The completion is called once, on the main queue, with the
  /// result or the error; the other one is nil. Object, data and completion are kept until then;
  /// mutable ones must not be changed meanwhile. A nil completion throws NSException
  /// (NSInvalidArgumentException).
  static void encodeJSONObject(const Value& object, std::uint64_t options,
                               EncodingCompletion completion);
  static void decodeJSONData(const NSData& data, std::uint64_t options,
                             DecodingCompletion completion);

  /// Registered as "ZEBJSONSerialization", with all functions here under their selectors.
  /// Completions and errors are passed as described in Runtime/BlockConversion.h and
  /// Runtime/ErrorConversion.h.
  static Class* runtimeClass();
};

}  // namespace zeb
