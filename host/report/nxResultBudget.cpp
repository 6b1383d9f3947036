#include "host/report/nxResultBudget.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "host/report/nxResultSections.h"

namespace {

// A number of a series takes some 10 bytes, a fill 65, a round trip 150, an order 110 and each event 45.
constexpr std::size_t AllNumbers = 200'000, AllFills = 20'000, AllTrips = 10'000, AllOrders = 10'000,
                      AllEvents = 40'000;
constexpr std::size_t MostPoints = 8'192;

struct List
{
    std::size_t size;
    std::size_t width = 1;  // what each of its places counts
};

// The largest limit of every list under which all together keep to the sum.
std::size_t Share(const std::vector<List>& lists, std::size_t most, std::size_t sum)
{
    std::size_t least = 0;
    while (least < most) {
        const std::size_t limit = (least + most + 1) / 2;
        std::size_t taken = 0;
        for (const List& list : lists)
            taken += list.width * std::min(list.size, limit);
        taken <= sum ? least = limit : most = limit - 1;
    }
    return least;
}

std::vector<List> GetSeries(const nxResult& result)
{
    constexpr std::size_t equity = 6, prices = 4, line = 2;  // columns
    std::vector<List> lists;
    for (const nxResultData& data : result.results)
        lists.push_back({data.equity.Get().size(), equity});
    for (const nxResultProduct& product : result.products)
        lists.push_back({product.prices.Get().size(), prices});
    for (const nxResultLine& each : result.lines)
        lists.push_back({2 * each.values.Get().size(), line});
    return lists;
}

template <class Items, class GetSize>
std::vector<List> GetLists(const Items& items, GetSize getSize)
{
    std::vector<List> lists;
    for (const auto& item : items)
        lists.push_back({getSize(item)});
    return lists;
}

}  // namespace

nxResultBudget::nxResultBudget(const nxResult& result)
    : points(Share(GetSeries(result), MostPoints, AllNumbers)),
      fills(Share(GetLists(result.products, [](const auto& product) { return product.fills.size(); }),
                  AllFills, AllFills)),
      trips(Share(GetLists(result.results, [](const auto& data) { return data.trips.GetCount(); }), AllTrips,
                  AllTrips)),
      orders(
          Share(GetLists(result.results, [&](const auto& data) { return nxGetOrders(result, data).size(); }),
                AllOrders, AllOrders)),
      events(Share(GetLists(result.orders, [](const auto& order) { return order.events.size(); }), AllEvents,
                   AllEvents))
{
}

std::vector<const nxResultOrder*> nxGetOrders(const nxResult& result, const nxResultData& data)
{
    const std::string currency = nxGetCurrency(data);
    std::set<std::string_view> products;
    for (const nxResultProduct& product : result.products)
        if (product.currency == currency) products.insert(product.name);
    std::vector<const nxResultOrder*> orders;
    for (const nxResultOrder& order : result.orders)
        if ((!data.job || order.job == result.jobs[*data.job].name) && products.contains(order.product))
            orders.push_back(&order);
    return orders;
}
