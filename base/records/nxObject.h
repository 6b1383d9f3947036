#pragma once

// The base of the records that travel as messages. A record is a value: copying copies every field, and it
// holds no lock of its own.
class nxObject
{
public:
    virtual ~nxObject() = default;

    // A copy of the whole record, owned by the caller.
    virtual nxObject* CopyInstance() const = 0;

protected:
    nxObject() = default;
    nxObject(const nxObject&) = default;
    nxObject& operator=(const nxObject&) = default;
};
