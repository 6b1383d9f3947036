#include "api/nxProductCache.h"

#include "base/threads/nxMutexGuard.h"

nxProductCache& nxProductCache::GetInstance()
{
    static nxProductCache instance;
    return instance;
}

void nxProductCache::SetProductDefinition(const nxProductID& productID, const nxProductDefinition& definition)
{
    std::unique_ptr<nxProductDefinition> copy(definition.CopyInstance());
    const nxMutexGuard guard(_mutex);
    _definitions[productID.GetAsString()] = std::move(copy);
}

nxProductDefinition* nxProductCache::GetProductDefinition(const nxProductID& productID, bool, unsigned int)
{
    const nxMutexGuard guard(_mutex);
    const auto found = _definitions.find(productID.GetAsString());
    return found == _definitions.end() ? nullptr : found->second->CopyInstance();
}

void nxProductCache::Clear()
{
    const nxMutexGuard guard(_mutex);
    _definitions.clear();
}
