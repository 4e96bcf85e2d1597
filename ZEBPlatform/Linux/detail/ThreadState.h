#pragma once

namespace zeb {

/// The system's number for the calling thread, unique on the machine while the thread lives.
int currentThreadIdentifier() noexcept;

/// Whether the thread of this process sleeps or waits for anything but a processor. Also false if
/// the system does not answer, because the thread has ended or no file descriptor is left to ask
/// with.
bool isThreadBlocked(int threadIdentifier) noexcept;

/// A pause of the processor, for a thread that waits for another one without sleeping.
void relaxProcessor() noexcept;

}  // namespace zeb
