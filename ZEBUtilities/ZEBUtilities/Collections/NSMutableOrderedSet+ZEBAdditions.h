#pragma once

#include <ZEBPlatform/Foundation/NSOrderedSet.h>
#include <ZEBPlatform/Memory/FunctionView.h>

#include <cstddef>

namespace zeb {

/// Moves the first member that passes the test (without a test: the member that is equal to the
/// object) so that it has this index afterwards. Nothing happens if the object is nil or there is
/// no such member; deliberately, a nil object also keeps the test from being used. An index at or
/// past the end throws NSException (NSRangeException).
void zeb_moveObjectIfNotNil(NSMutableOrderedSet set, const Value& object, std::size_t index,
                            FunctionView<bool(const Value& member)> passingTest = nullptr);

}  // namespace zeb
