#pragma once

#include <memory>

#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

// The handle of a native shared library. The library is loaded, and no more: what a call would resolve in it
// and with which signature is not decided, so `call` gives nothing back. Owned by the host; copies share one
// handle. The library stays loaded until the process ends.
class nxAlgoLibraryObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoLibraryObject";
    static const nxLuaWrapper<nxAlgoLibraryObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoLibraryObject>::PropertyType Properties[];

    // Succeeds also where there is no such library.
    explicit nxAlgoLibraryObject(nxAlgoJobInterface* job);

    // A table of numbers gives nil, anything else nothing.
    bool call(nxLuaParameters&, nxLuaResults&);

private:
    struct Library
    {
        void* handle;  // null: not loaded
    };

    std::shared_ptr<Library> _library;
};
