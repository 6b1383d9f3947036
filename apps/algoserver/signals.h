#pragma once

#include <atomic>

// From then on the first Ctrl-C is told by GetInterrupted() and a second one ends the process; a pipe that is
// closed, or a file that may not grow, fails the write instead of ending the process.
void CatchSignals();
const std::atomic<bool>& GetInterrupted();
