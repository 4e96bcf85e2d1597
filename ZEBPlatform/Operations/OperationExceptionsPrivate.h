#pragma once

#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Operations/NSOperation.h>

namespace zeb::detail {

/// Calls the body; an NSException that leaves it is logged. Whether the body returned.
bool loggingExceptions(const NSOperation& operation, FunctionView<void()> body);

}  // namespace zeb::detail
