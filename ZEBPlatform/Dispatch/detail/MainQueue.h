#pragma once

namespace zeb::detail {

// The main run loop's interface to the main queue.

/// Sets the function that is called, on any thread, whenever the main queue goes from empty to not
/// empty, and at once if it has blocks already. There is one such function at a time: the main run
/// loop's.
void setMainQueueWaker(void (*wake)());

/// Runs blocks of the main queue on the main thread, at most 256 of them. Answers whether there are
/// more: then it must be called again, because `wake` is not. Called from a block of the main queue
/// it does nothing and answers false.
bool runMainQueue();

}  // namespace zeb::detail
