#pragma once

namespace zeb {

/// Has `before` called on the forking thread before each fork(), and afterwards `inParent` in the
/// parent and `inChild` in the child (pthread_atfork). Programs that are started with posix_spawn
/// or system() call none of them. Returns 0 or the error number. Any thread; cannot be undone.
int callAroundForks(void (*before)(), void (*inParent)(), void (*inChild)()) noexcept;

}  // namespace zeb
