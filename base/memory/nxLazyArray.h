#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

// An array of which most elements are never asked for: each is made when it first is, in pages of memory that
// are made with the first element in them. What it holds never moves.
template <class T>
class nxLazyArray
{
public:
    // The element at the place; make() is called for it when there is none yet.
    template <class Make>
    T& Get(std::size_t place, Make make)
    {
        std::optional<T>& element = _FindPage(place / PageSize)[place % PageSize];
        if (!element) element.emplace(make());
        return *element;
    }

    // Of the pages that were made.
    std::size_t GetBytes() const { return _made * sizeof(Page); }

private:
    static constexpr std::size_t PageSize = 64;
    using Page = std::array<std::optional<T>, PageSize>;

    Page& _FindPage(std::size_t number)
    {
        if (number >= _pages.size()) _pages.resize(number + 1);
        if (_pages[number] == nullptr) {
            _pages[number] = std::make_unique<Page>();
            ++_made;
        }
        return *_pages[number];
    }

    std::vector<std::unique_ptr<Page>> _pages;  // null where nobody asked
    std::size_t _made = 0;
};
