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
  /// The document's root is of another kind than requested.
  ZEBNSDataJSONAdditionsErrorUnexpectedRoot = 1,
};

/// The document's root as an immutable dictionary or array; nil on failure. Nil and empty data give
/// nil without an error. Parses with `ZEBJSONSerialization`, which logs parsing on the main thread.
/// A root of another kind gives the error above, without details; malformed data gives the reader's
/// error.
[[nodiscard]] NSDictionary zeb_JSONDictionary(const NSData& data, NSError* error = nullptr);
[[nodiscard]] NSArray zeb_JSONArray(const NSData& data, NSError* error = nullptr);

}  // namespace zeb
