#pragma once

#include <cstddef>

namespace zeb {

/// The number of bytes that the calling thread's stack can still grow, for code that recurses
/// through the user's code and must stop in time. SIZE_MAX on a stack that is not the thread's own,
/// for example a coroutine's. After a thread's first call it costs some nanoseconds.
std::size_t remainingStack() noexcept;

}  // namespace zeb
