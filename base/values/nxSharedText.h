#pragma once

#include <cstddef>
#include <string>
#include <utility>

// A text that all who hold an equal one share, at the cost of a pointer to each. Meant for texts that repeat,
// as labels and names do: taking and leaving one is a look-up under a process-wide lock. Holders on different
// threads may share; a single holder is guarded like any value.
class nxSharedText
{
public:
    nxSharedText() = default;  // empty
    nxSharedText(const std::string& text);
    nxSharedText(const nxSharedText& other);
    nxSharedText(nxSharedText&& other) noexcept : _entry(other._entry) { other._entry = nullptr; }
    nxSharedText& operator=(nxSharedText other) noexcept
    {
        std::swap(_entry, other._entry);
        return *this;
    }
    ~nxSharedText();

    // Good while one of its holders is left.
    const std::string& Get() const;

private:
    // A text, and how many hold it.
    using Entry = std::pair<const std::string, std::size_t>;

    Entry* _entry = nullptr;  // null for an empty text
};
