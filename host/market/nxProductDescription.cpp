#include "host/market/nxProductDescription.h"

std::vector<nxFeedProductTerms> nxGetFeedTerms(const std::vector<nxProductDescription>& products)
{
    std::vector<nxFeedProductTerms> terms;
    terms.reserve(products.size());
    for (const nxProductDescription& product : products)
        terms.push_back({product.name, product.tickSize, product.lotSize});
    return terms;
}
