#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSError.h>

#include <cstdint>

namespace zeb {

/// Domain of the errors below.
extern const char* const ZEBNSDataJSONAdditionsErrorDomain;

enum : std::int64_t {
  /// The document's root is not of the kind that was asked for.
  ZEBNSDataJSONAdditionsErrorUnexpectedRoot = 1,
};

/// The document's root as an immutable dictionary or array; nil on failure, and for no data at all
/// without an error. Parses through `ZEBJSONSerialization`, which logs parsing on the main thread. A
/// root of another kind is the error above, without details; malformed data the reader's own.
[[nodiscard]] NSDictionary zeb_JSONDictionary(const NSData& data, NSError* error = nullptr);
[[nodiscard]] NSArray zeb_JSONArray(const NSData& data, NSError* error = nullptr);

}  // namespace zeb
