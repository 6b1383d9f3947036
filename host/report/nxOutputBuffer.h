#pragma once

#include <atomic>

// Bytes of a file on their way to the system. Where the buffer lies in memory that another process shares,
// that one finds there what the writer had not written yet when it was killed; it takes no word of it for
// granted. One thread writes.
struct nxOutputBuffer
{
    static constexpr unsigned int Size = 64 * 1024;

    std::atomic<unsigned int> used = 0;           // bytes that wait
    std::atomic<unsigned long long> written = 0;  // bytes that the system has; follows `used`
    std::atomic<unsigned long long> pieces = 0;   // how often something was put in, whole
    std::atomic<bool> isWriting = false;          // waits for the system, or for who reads a pipe
    std::atomic<bool> isOpen = false;             // more may come
    char bytes[Size];
};
