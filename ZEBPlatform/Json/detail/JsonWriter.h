#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/Value.h>

#include <cstdint>

namespace zeb::detail {

/// What writing too deep a tree answers.
NSError nestingError();

/// The document, as `NSJSONSerialization::dataWithJSONObject` describes it. Throws NSException for what
/// JSON can't hold, and NSError for what is nested too deeply.
NSData writeJson(const Value& root, std::uint64_t options);

}  // namespace zeb::detail
