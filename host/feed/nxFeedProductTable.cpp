#include "host/feed/nxFeedProductTable.h"

const nxFeedProduct* nxFeedProductTable::Find(std::string_view name) const
{
    const auto found = _indexes.find(name);
    return found == _indexes.end() ? nullptr : &_products[found->second];
}

unsigned int nxFeedProductTable::Add(std::string_view name)
{
    const auto found = _indexes.find(name);
    if (found != _indexes.end()) return found->second;
    const unsigned int index = GetCount();
    _products.Append(std::string(name), index, *_changes);
    _indexes.emplace(name, index);
    auto period = _barPeriods.find(name);
    if (period == _barPeriods.end()) period = _barPeriods.find(std::string_view());
    if (period != _barPeriods.end()) _products[index].SetBarPeriod(period->second);
    return index;
}

unsigned int nxFeedProductTable::Add(const nxFeedProductTerms& terms)
{
    const unsigned int index = Add(terms.name);
    _products[index].SetDescribed();
    if (terms.tickSize.IsValid()) _products[index].SetTickSize(terms.tickSize);
    if (terms.lotSize.IsValid()) _products[index].SetLotSize(terms.lotSize);
    return index;
}

void nxFeedProductTable::NotePrice(std::string_view product, const nxDecimal& price)
{
    Get(Add(product)).NotePrice(price);
}

void nxFeedProductTable::Follow(const nxFeedProductTable& other)
{
    for (unsigned int i = 0; i < other.GetCount(); ++i)
        Follow(other.Get(i));
}
