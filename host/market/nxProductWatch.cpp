#include "host/market/nxProductWatch.h"

#include "host/market/nxProductFile.h"
#include "host/market/nxProductUpdate.h"

bool nxProductWatch::Look(nxProductDescriptions& products, std::vector<std::string>& lines)
{
    if (!_file.HasChanged()) return false;
    std::vector<nxProductDescription> written;
    nxFeedError error;
    if (!nxProductFile::Read(_file.GetPath(), written, error)) {
        lines.push_back(error.GetText() + "; the products stay as they were");
        return false;
    }
    nxProductUpdate update(*products, written);
    if (update.refusal) {
        lines.push_back(_file.GetPath() + ": " + *update.refusal + "; the products stay as they were");
        return false;
    }
    for (const std::string& change : update.changes)
        lines.push_back(_file.GetPath() + ": " + change);
    if (update.changes.empty()) return false;
    products = std::make_shared<const std::vector<nxProductDescription>>(std::move(update.products));
    return true;
}
