#pragma once

#include "base/records/nxObject.h"

// The base of the records that a data object cache holds.
class nxDataObject : public nxObject
{
public:
    nxDataObject* CopyInstance() const override = 0;
};
