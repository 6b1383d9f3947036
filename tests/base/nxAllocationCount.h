#pragma once

// How often the test program has asked for memory. Only the difference around a piece of code on one thread
// tells something.
class nxAllocationCount
{
public:
    static long long Get();
};
