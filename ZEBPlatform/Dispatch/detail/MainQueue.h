#pragma once

namespace zeb::detail {

/// What the main run loop needs of the main queue: to be woken for it, and to run it.

/// `wake` is called, on any thread, whenever the main queue goes from empty to not empty; at once if
/// there is work already. One waker at a time: the main run loop's.
void setMainQueueWaker(void (*wake)());

/// Runs blocks of the main queue that are there now, up to a fair number. Main thread. Whether there are
/// more; then it must be called again, for `wake` is not. From inside a block of the main queue it does
/// nothing and answers false.
bool runMainQueue();

}  // namespace zeb::detail
