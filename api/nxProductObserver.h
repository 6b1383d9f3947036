#pragma once

#include "api/nxDataObjectCacheObserverTemplate.h"
#include "base/records/nxProductDefinition.h"

// One who watches the definition of one product.
class nxProductObserver : public nxDataObjectCacheObserverTemplate<nxProductDefinition, nxProductDefinition>
{
};
