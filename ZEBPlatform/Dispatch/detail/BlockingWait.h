#pragma once

#include <ZEBPlatform/Concurrency/detail/ThreadGate.h>

namespace zeb::detail {

/// Waits until the gate is open. If the calling thread belongs to the pool, another thread takes
/// its place meanwhile.
void waitUntilOpen(ThreadGate& gate) noexcept;

}  // namespace zeb::detail
