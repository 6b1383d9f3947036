#pragma once

#include <atomic>

// From then on GetShortOfMemory() tells that some C++ code found no memory, also where a script caught the
// error.
void WatchMemory();
const std::atomic<bool>& GetShortOfMemory();
