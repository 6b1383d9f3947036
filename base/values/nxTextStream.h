#pragma once

#include <sstream>

// Builds a text by a stream. Where there is no memory for it, it throws std::bad_alloc; a stream of the
// standard library would leave out what has no room, and go on.
class nxTextStream : public std::ostringstream
{
public:
    nxTextStream() { exceptions(std::ios::badbit); }
};
