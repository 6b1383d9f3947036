#pragma once

// What a walk over an indexed map does with each entry that it selects. It is used by one thread at a time.
template <class Entry>
class nxIndexedMapAction
{
public:
    virtual ~nxIndexedMapAction() = default;

    // May put entries into the map, but not take any out.
    virtual void operator()(Entry* entry) = 0;

    // Once true, the walk ends.
    bool IsDone() const { return _done; }

protected:
    bool _done = false;
};
