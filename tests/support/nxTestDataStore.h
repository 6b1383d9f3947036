#pragma once

#include "scriptFramework/analytics/nxAlgoDataStoreObject.h"

// A store that the test fills and nobody saves.
class nxTestDataStore : public nxAlgoDataStoreObject
{
public:
    using nxAlgoDataStoreObject::_LoadRow, nxAlgoDataStoreObject::nxAlgoDataStoreObject;

protected:
    bool _BeginPersist() override { return false; }
    void _PersistRow(const Row*) override {}
    void _EndPersist() override {}
};
