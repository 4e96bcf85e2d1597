#pragma once

namespace zeb {

/// The system's number for the calling thread, unique on the machine while the thread lives.
int currentThreadIdentifier() noexcept;

/// Whether that thread of this process sleeps or waits for something other than a processor. False also
/// when the system does not tell: the thread has ended, or there is no file descriptor left to ask with.
bool isThreadBlocked(int threadIdentifier) noexcept;

/// A short rest of a thread that waits for another one without sleeping.
void relaxProcessor() noexcept;

}  // namespace zeb
