#pragma once

#include <cstddef>

// Asks the system to provide the memory, which was not touched yet, in its large pages where it has them: the
// first touch of each is one of 2 MiB instead of 512 of 4 KiB. Asked for are whole large pages only, so an
// array takes at most one of them more than it fills. What the memory holds stays as it is; where the system
// cannot, nothing happens. On any thread.
void nxUseLargePages(void* memory, std::size_t bytes);
