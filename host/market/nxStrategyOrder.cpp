#include "host/market/nxStrategyOrder.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

nxStrategyOrder::nxStrategyOrder(const std::vector<nxProductDescription>& products)
{
    if (std::ranges::none_of(products, &nxProductDescription::IsStrategy)) return;
    std::unordered_map<std::string_view, std::size_t> indexes;
    for (std::size_t i = 0; i < products.size(); ++i)
        indexes.emplace(products[i].name, i);

    // Without recursion: a file may describe a chain of any length.
    std::vector<std::vector<std::size_t>> users(products.size());
    std::vector<std::size_t> missing(products.size());  // legs that are not in their place yet
    for (std::size_t i = 0; i < products.size(); ++i) {
        for (const nxProductLegDescription& leg : products[i].legs) {
            const auto found = indexes.find(leg.product);
            if (found == indexes.end()) continue;
            users[found->second].push_back(i);
            ++missing[i];
        }
    }
    std::vector<std::size_t> done;
    for (std::size_t i = 0; i < products.size(); ++i)
        if (missing[i] == 0) done.push_back(i);
    for (std::size_t i = 0; i < done.size(); ++i)
        for (const std::size_t user : users[done[i]])
            if (--missing[user] == 0) done.push_back(user);
    std::ranges::copy_if(done, std::back_inserter(strategies),
                         [&](std::size_t i) { return !products[i].legs.empty(); });

    // Whoever is left waits for one that is left, so the way from one to the next comes round.
    const auto stuck = std::ranges::find_if(missing, [](std::size_t count) { return count != 0; });
    if (stuck == missing.end()) return;
    std::size_t current = static_cast<std::size_t>(stuck - missing.begin());
    std::vector<bool> isVisited(products.size());
    while (!isVisited[current]) {
        isVisited[current] = true;
        cycle.push_back(current);
        for (const nxProductLegDescription& leg : products[current].legs) {
            const auto found = indexes.find(leg.product);
            if (found == indexes.end() || missing[found->second] == 0) continue;
            current = found->second;
            break;
        }
    }
    cycle.erase(cycle.begin(), std::ranges::find(cycle, current));
}
