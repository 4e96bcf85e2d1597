#pragma once

namespace zeb {

// The signal of profiling timers (SIGPROF), with which one thread makes another one run a function.

extern const int profilingSignal;

/// `context` is the state of the interrupted code, see CallStack.h.
using ProfilingHandler = void (*)(const void* context);

/// Calls `handler` on the calling thread as the signal will do. Must be done once before the
/// handler is installed: the dynamic linker looks a function up when it is first called, and takes
/// locks and allocates memory for that, which must not happen in a signal handler.
void rehearseProfilingHandler(ProfilingHandler handler) noexcept;

/// Lets the signal call `handler` on the thread that gets it. All signals are blocked meanwhile,
/// and the interrupted code's `errno` stays as it is. System calls that the signal interrupts go on
/// afterwards where the system can do that (SA_RESTART), because the interrupted code does not
/// expect a failure with EINTR; sleeping and waiting for descriptors end early nevertheless.
/// Replaces the signal's previous action. `handler` must be safe in signal handlers.
void installProfilingHandler(ProfilingHandler handler) noexcept;

/// Whether the signal still calls the installed handler.
bool isProfilingHandlerInstalled() noexcept;

/// Restores the default action, which ends the process. Signals that were sent and have not been
/// handled are dropped before, so that they do not end it.
void restoreDefaultProfilingAction() noexcept;

}  // namespace zeb
