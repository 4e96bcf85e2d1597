#pragma once

namespace zeb {

/// The system's number for the calling thread, unique on the machine while the thread lives.
int currentThreadIdentifier() noexcept;

/// Whether that thread of this process is running or waits for nothing but a processor; false when it
/// sleeps, is blocked or has ended.
bool isThreadRunnable(int threadIdentifier) noexcept;

/// A short rest of a thread that waits for another one without sleeping.
void relaxProcessor() noexcept;

}  // namespace zeb
