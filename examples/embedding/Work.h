#pragma once

#include <functional>

/// An application's use of our main loop: blocks on the main queue, a timer, and a call from
/// another thread. Prints each step, and calls `quit` on the main thread after the last one.
void startWork(std::function<void()> quit);
