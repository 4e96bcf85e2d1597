#pragma once

#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Operations/NSOperation.h>

namespace zeb::detail {

/// Calls the body and logs an NSException that leaves it. Whether the body returned.
bool loggingExceptions(const NSOperation& operation, FunctionView<void()> body);

}  // namespace zeb::detail
