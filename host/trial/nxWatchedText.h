#pragma once

#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>

// A text in memory that a process made by fork shares with its parent, who believes nothing of it.
class nxWatchedText
{
public:
    static constexpr std::size_t MostBytes = 1 << 16;

    struct Unmapper
    {
        void operator()(nxWatchedText* text) const { munmap(text, sizeof(nxWatchedText)); }
    };
    using Pointer = std::unique_ptr<nxWatchedText, Unmapper>;

    // Null: there is no memory.
    static Pointer Make()
    {
        void* const memory =
            mmap(nullptr, sizeof(nxWatchedText), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        return Pointer(memory == MAP_FAILED ? nullptr : new (memory) nxWatchedText);
    }

    // What is longer than it takes is cut after a line.
    void Set(std::string_view text)
    {
        if (text.size() > MostBytes) text = text.substr(0, text.rfind('\n', MostBytes - 1) + 1);
        std::memcpy(_bytes, text.data(), text.size());
        _size = text.size();
    }
    std::string Get() const
    {
        const std::size_t size = _size;
        return std::string(_bytes, std::min(size, MostBytes));
    }

private:
    nxWatchedText() = default;

    std::atomic<std::size_t> _size = 0;
    char _bytes[MostBytes];
};
