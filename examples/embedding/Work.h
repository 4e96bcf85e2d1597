#pragma once

#include <functional>

/// What an application does with our main loop, whoever drives it: blocks on the main queue, a timer, and a
/// call from another thread. Prints each step, and calls `quit` on the main thread after the last one.
void startWork(std::function<void()> quit);
