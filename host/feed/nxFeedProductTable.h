#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "base/memory/nxGrowingArray.h"
#include "host/feed/nxFeedProduct.h"
#include "host/feed/nxFeedProductTerms.h"

// The products of a feed in the order they were met, the described ones first. An index and a reference stay
// good for the life of the table; it grows while the feed is read. Owned by the nxFeed, used by its thread.
class nxFeedProductTable
{
public:
    // The periods are as in nxFeedOptions.
    explicit nxFeedProductTable(std::map<std::string, long long, std::less<>> barPeriods = {})
        : _barPeriods(std::move(barPeriods))
    {
    }

    [[nodiscard]] unsigned int GetCount() const { return static_cast<unsigned int>(_products.GetSize()); }
    [[nodiscard]] nxFeedProduct& Get(unsigned int index) { return _products[index]; }
    [[nodiscard]] const nxFeedProduct& Get(unsigned int index) const { return _products[index]; }

    // Null: there is none of that name.
    [[nodiscard]] const nxFeedProduct* Find(std::string_view name) const;

    // The index of the product of that name, made if it is new.
    unsigned int Add(std::string_view name);
    // Takes over the tick and lot size, where they are given.
    unsigned int Add(const nxFeedProductTerms& terms);

    // A price that a product is going to have beside those of its data, for the tick size.
    void NotePrice(std::string_view product, const nxDecimal& price);

    // Differs whenever what the jobs of a run can know of the products does, but for the rows so far.
    [[nodiscard]] unsigned long long GetVersion() const { return _changes->version; }
    // Whether TakeChanges would visit any.
    [[nodiscard]] bool HasChanges() const { return !_changes->products.empty(); }
    // Calls visit(index, product, change) for each product that has changed since the last call, the new ones
    // in their order.
    template <class Visit>
    void TakeChanges(Visit visit)
    {
        for (const unsigned int index : _changes->products)
            visit(index, std::as_const(_products[index]), _products[index].TakeChange());
        _changes->products.clear();
    }
    // Becomes the same as that table, of which this one holds the first products.
    void Follow(const nxFeedProductTable& other);
    // The same for one product, which this one holds or which comes next.
    void Follow(const nxFeedProduct& product) { _products[Add(product.GetName())].Follow(product); }

private:
    struct Hash
    {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };

    std::map<std::string, long long, std::less<>> _barPeriods;
    std::unique_ptr<nxFeedProductChanges> _changes = std::make_unique<nxFeedProductChanges>();
    nxGrowingArray<nxFeedProduct> _products;
    std::unordered_map<std::string, unsigned int, Hash, std::equal_to<>> _indexes;
};
