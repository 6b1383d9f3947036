#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

class nxLuaState;

// What a script holds, and on which path it finds it: a plain picture of its heap at one moment.
//
// Everything belongs to the shortest path from the globals on. A path goes through fields that have names, as
// in _G.book.bids; what stands in a list, or in a table of many keys, belongs to that table. "_G.OnPrice:
// prices" is a variable outside of that function which it uses. Lua does not tell the size of a value: bytes
// are what its parts take, and within a few percent.
class nxScriptHeap
{
public:
    enum Kind { Tables, Texts, Functions, Userdata, Coroutines, KindCount };
    struct Sum
    {
        std::size_t count = 0;
        std::size_t bytes = 0;
    };
    struct Path
    {
        std::string name;
        std::size_t bytes = 0;    // without those of the paths that go on from it
        std::size_t entries = 0;  // of the table there; 0: it is none
    };

    std::size_t bytes = 0;  // of the whole heap, the code among it
    std::array<Sum, KindCount> kinds;
    std::vector<Path> paths;  // of at least 256 bytes each

    // Collects all garbage, and looks. Raises Lua's error for want of memory.
    void Read(nxLuaState& state);
};
