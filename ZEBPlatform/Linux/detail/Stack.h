#pragma once

#include <cstddef>

namespace zeb {

/// Bytes that the calling thread's stack can still grow by, as far as the system tells; for code that
/// recurses into other people's code and must stop in time. SIZE_MAX on a stack that is not the thread's own.
/// Cheap after a thread's first call.
std::size_t remainingStack() noexcept;

}  // namespace zeb
