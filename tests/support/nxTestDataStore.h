#pragma once

#include "scriptFramework/analytics/nxAlgoDataStoreObject.h"

// A store that writes its saves down: "begin", a row as "a|b;", "end".
class nxTestDataStore : public nxAlgoDataStoreObject
{
public:
    using nxAlgoDataStoreObject::nxAlgoDataStoreObject;

    void Load(const Row& row) { _LoadRow(row); }
    std::string Save()
    {
        saved.clear();
        const bool result = Persist();
        return saved + (result ? " true" : " false");
    }

    bool wantsSave = true;
    std::string saved;

protected:
    bool _BeginPersist() override
    {
        saved += "begin ";
        return wantsSave;
    }
    void _PersistRow(const Row* row) override
    {
        for (const std::string& column : *row)
            saved += column + "|";
        saved += ";";
    }
    void _EndPersist() override { saved += " end"; }
};
