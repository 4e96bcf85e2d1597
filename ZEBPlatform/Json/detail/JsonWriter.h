#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/Value.h>

#include <cstdint>

namespace zeb::detail {

/// The error for a tree that is nested too deeply.
NSError nestingError();

/// The document, as `NSJSONSerialization::dataWithJSONObject` describes it. Throws NSException for
/// what JSON cannot represent, and NSError for a tree that is nested too deeply.
NSData writeJson(const Value& root, std::uint64_t options);

}  // namespace zeb::detail
