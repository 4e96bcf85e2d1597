#pragma once

namespace zeb {

/// Whether the calling thread is the one that the process started with.
bool isMainThread() noexcept;

}  // namespace zeb
