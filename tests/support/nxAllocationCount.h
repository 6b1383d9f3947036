#pragma once

#include <cstddef>

// How often the test program has asked for memory. Only the difference around a piece of code on one thread
// tells something.
class nxAllocationCount
{
public:
    static long long Get();
    // From now on there is no memory of that size, nor of up to 64 bytes more; 0: there is of any size.
    static void Lack(std::size_t size);
};
