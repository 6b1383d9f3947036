#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/threads/nxMutex.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"
#include "scriptFramework/lua/nxScriptCharge.h"

// A named table of text that outlives a job: the answer of job:getDataStore. The host derives from it, loads
// it before the script gets it, says when it is to be persisted, and keeps it as long as a script can reach
// it. Each operation may be called from any thread; one that a script calls waits while the store is being
// persisted.
class nxAlgoDataStoreObject : public nxAlgoObject
{
public:
    using Row = std::vector<std::string>;

    static constexpr const char* className = "nxAlgoDataStoreObject";
    static const nxLuaWrapper<nxAlgoDataStoreObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoDataStoreObject>::PropertyType Properties[];

    explicit nxAlgoDataStoreObject(nxAlgoJobInterface* job) : nxAlgoObject(job) {}
    nxAlgoDataStoreObject(const nxAlgoDataStoreObject&) = delete;
    nxAlgoDataStoreObject& operator=(const nxAlgoDataStoreObject&) = delete;

    // Hands the rows to the host's medium. Always true: how it went is the medium's to tell.
    bool Persist();
    // For the host: whether it can be used. Nothing in the library asks.
    bool Valid() const { return _valid; }

    // Texts end at their first NUL here and in get, as everywhere between a script and the library.
    bool add(nxLuaParameters&, nxLuaResults&);
    // In the place of the row at an index, which counts from 1; without values the row becomes empty.
    bool set(nxLuaParameters&, nxLuaResults&);
    // One result for each column.
    bool get(nxLuaParameters&, nxLuaResults&);
    bool clear(nxLuaParameters&, nxLuaResults&);

    bool Get_count(nxLuaResults&);

protected:
    // One save: _BeginPersist, without the lock; where it is true _PersistRow for each row in order and then
    // _EndPersist, under the lock, so none of them may call what takes it.
    virtual bool _BeginPersist() = 0;
    virtual void _PersistRow(const Row* row) = 0;
    virtual void _EndPersist() = 0;

    // Appends a row, which may be larger, and make the store larger, than a script could.
    void _LoadRow(const Row& row);
    void _SetInvalid() { _valid = false; }

    std::vector<std::unique_ptr<Row>> _rows;  // guarded by _mutex
    nxMutex _mutex;

private:
    bool _HasRow(unsigned int index);
    std::size_t _GetRowBytes(unsigned int index);
    // Charges the script for a row in place of one of so many bytes.
    bool _Charge(nxLuaResults& results, const Row& row, std::size_t before);

    // Of each script that has written rows: one for each account, guarded by _mutex.
    std::vector<nxScriptCharge> _charges;
    bool _valid = true;
};
