// The long lists of a result, all of bounded length.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "host/report/nxResultBudget.h"
#include "host/report/nxResultSections.h"
#include "host/report/nxResultText.h"

using namespace nxResultText;

namespace {

void WriteNames(nxJsonWriter& json, std::initializer_list<const char*> names)
{
    json.Key("columns").BeginArray();
    for (const char* name : names)
        json.Text(name);
    json.EndArray();
}

// At most so many, each of equally many neighbours.
template <class Bucket>
std::vector<Bucket> Thin(const std::vector<Bucket>& buckets, std::size_t most)
{
    if (buckets.size() <= most) return buckets;
    const std::size_t size = most == 0 ? buckets.size() : (buckets.size() + most - 1) / most;
    std::vector<Bucket> thinned;
    for (std::size_t i = 0; i < buckets.size(); ++i)
        i % size == 0 ? thinned.push_back(buckets[i]) : thinned.back().Merge(buckets[i]);
    return thinned;
}

template <class Bucket>
void WriteBuckets(nxJsonWriter& json, const std::vector<Bucket>& buckets, double offset)
{
    json.Column("ms", buckets, [](const Bucket& b) { return GetMilliseconds(b.time); });
    json.Column("low", buckets, [offset](const Bucket& b) { return offset + b.low; });
    json.Column("high", buckets, [offset](const Bucket& b) { return offset + b.high; });
    json.Column("close", buckets, [offset](const Bucket& b) { return offset + b.close; });
}

// All of them, or the largest by the size of their profits, in the order of their exits.
std::vector<std::size_t> ChooseTrips(const nxRoundTrips& trips, std::size_t most)
{
    std::vector<std::size_t> chosen(trips.GetCount());
    std::iota(chosen.begin(), chosen.end(), std::size_t{0});
    if (chosen.size() > most) {
        std::ranges::stable_sort(chosen, std::ranges::greater(),
                                 [&](std::size_t i) { return std::abs(trips[i].profit.GetAsDouble()); });
        chosen.resize(most);
        std::ranges::sort(chosen);
    }
    std::ranges::stable_sort(chosen, {}, [&](std::size_t i) { return trips.GetExitTime(i); });
    return chosen;
}

void WriteTrips(nxJsonWriter& json, const nxResult& result, const nxRoundTrips& trips, std::size_t most)
{
    json.Key("roundTrips").BeginObject();
    json.Key("all").Count(trips.GetCount());
    WriteNames(json, {"product", "side", "volume", "entryMs", "exitMs", "entryPrice", "exitPrice", "profit",
                      "fees", "mae", "mfe", "entryOrder", "exitOrder"});
    json.Key("rows").BeginArray();
    for (const std::size_t i : ChooseTrips(trips, most)) {
        const nxRoundTrip trip = trips[i];
        json.BeginArray();
        json.Text(result.products[trip.product].name);
        json.Text(nxGetText(trip.side));
        json.Count(trip.volume);
        constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
        const double mae = trip.hasExcursions ? trip.mae.GetAsDouble() : unknown;
        const double mfe = trip.hasExcursions ? trip.mfe.GetAsDouble() : unknown;
        for (const double number :
             {GetMilliseconds(trip.entryTime), GetMilliseconds(trip.exitTime), trip.entryPrice,
              trip.exitPrice, trip.profit.GetAsDouble(), trip.fees.GetAsDouble(), mae, mfe})
            json.Number(number);
        json.Count(trip.entryOrder);
        json.Count(trip.exitOrder);
        json.EndArray();
    }
    json.EndArray();
    json.EndObject();
}

// Of its events the first and the last.
void WriteOrder(nxJsonWriter& json, const nxResultOrder& order, std::size_t mostEvents)
{
    json.BeginArray();
    json.Count(order.order);
    for (const std::string* text : {&order.product, &order.side, &order.type})
        json.Text(*text);
    json.Number(order.volume);
    json.Number(order.price);
    json.Count(order.executed);
    json.Number(order.executed == 0 ? std::nan("")
                                    : order.prices.GetShare(1, order.executed, 10).GetAsDouble());
    json.Number(order.fees.GetAsDouble());
    json.Text(order.status);
    json.Number(GetMilliseconds(order.sent));
    order.end ? json.Number(GetMilliseconds(*order.end)) : json.Null();
    order.hasSlippage ? json.Number(order.slippage.GetAsDouble()) : json.Null();
    json.BeginArray();
    for (std::size_t i = 0; i < order.events.size(); ++i) {
        if (i + 1 >= mostEvents && i + 1 != order.events.size()) continue;
        const nxResultOrder::Event& event = order.events[i];
        json.BeginArray();
        json.Number(GetMilliseconds(event.time));
        json.Text(event.name);
        json.Text(event.text);
        json.EndArray();
    }
    json.EndArray();
    json.EndArray();
}

// The first and the last halves of what there is room for.
void WriteOrders(nxJsonWriter& json, const nxResult& result, const nxResultData& data,
                 const nxResultBudget& budget)
{
    const std::vector<const nxResultOrder*> orders = nxGetOrders(result, data);
    const std::size_t most = std::min(budget.orders, orders.size());
    json.Key("orders").BeginObject();
    json.Key("all").Count(data.orders);
    WriteNames(json, {"order", "product", "side", "type", "volume", "price", "executed", "averagePrice",
                      "fees", "status", "sentMs", "endMs", "slippage", "events"});
    json.Key("rows").BeginArray();
    for (std::size_t i = 0; i < most; ++i)
        WriteOrder(json, *orders[i < most - most / 2 ? i : orders.size() - most + i], budget.events);
    json.EndArray();
    json.EndObject();
}

void WriteProduct(nxJsonWriter& json, const nxResultProduct& product, const nxResultBudget& budget)
{
    json.BeginObject();
    json.Key("name").Text(product.name);
    json.Key("currency").Text(product.currency);
    json.Key("pointValue").Number(product.pointValue);
    json.Key("tickSize").Number(product.tickSize);
    json.Key("prices").BeginObject();
    WriteBuckets(json, Thin(product.prices.Get(), budget.points), 0.0);
    json.EndObject();
    json.Key("fills").BeginObject();
    json.Key("all").Count(product.fillCount);
    WriteNames(json, {"ms", "job", "side", "price", "volume", "maker", "order"});
    json.Key("rows").BeginArray();
    for (std::size_t i = 0; i < std::min(budget.fills, product.fills.size()); ++i) {
        const nxResultProduct::Fill& fill = product.fills[i];
        json.BeginArray();
        json.Number(GetMilliseconds(fill.time));
        json.Text(fill.job);
        json.Text(fill.side);
        json.Number(fill.price);
        json.Count(fill.volume);
        json.Bool(fill.isMaker);
        json.Count(fill.order);
        json.EndArray();
    }
    json.EndArray();
    json.EndObject();
    json.EndObject();
}

// A bucket of several values is its least and its most, that nearer to the close as the second.
void WriteLine(nxJsonWriter& json, const nxResultLine& line, const nxResultBudget& budget)
{
    std::vector<std::pair<long long, double>> points;
    for (const nxPriceBucket& bucket : Thin(line.values.Get(), budget.points / 2)) {
        const bool isUp = bucket.high - bucket.close <= bucket.close - bucket.low;
        if (bucket.low != bucket.high) points.emplace_back(bucket.time, isUp ? bucket.low : bucket.high);
        points.emplace_back(bucket.time, isUp ? bucket.high : bucket.low);
    }
    json.BeginObject();
    json.Key("job").Text(line.job);
    json.Key("chart").Text(line.chart);
    json.Key("line").Text(line.line);
    json.Key("colour").Count(line.colour);
    json.Column("ms", points, [](const auto& point) { return GetMilliseconds(point.first); });
    json.Column("value", points, [](const auto& point) { return point.second; });
    json.EndObject();
}

void WriteFailures(nxJsonWriter& json, const std::vector<nxResultFailure>& failures)
{
    json.Key("failures").BeginArray();
    for (const nxResultFailure& failure : failures) {
        json.BeginObject();
        json.Key("job").Text(failure.job);
        json.Key("callback").Text(failure.callback);
        json.Key("text").Text(failure.text);
        json.Key("count").Count(failure.count);
        json.Key("first");
        failure.first ? json.Text(GetTime(*failure.first)) : json.Null();
        json.Key("file");
        failure.file.empty() ? json.Null() : json.Text(failure.file);
        json.Key("line");
        failure.line == 0 ? json.Null() : json.Count(failure.line);
        json.EndObject();
    }
    json.EndArray();
}

}  // namespace

void nxWriteSeries(nxJsonWriter& json, const nxResult& result, const nxResultData& data,
                   const nxResultBudget& budget)
{
    const std::vector<nxEquityBucket> equity = Thin(data.equity.Get(), budget.points);
    json.Key("equity").BeginObject();
    WriteBuckets(json, equity, result.run.capital.value_or(0.0));
    json.Column("drawdown", equity, [](const nxEquityBucket& b) { return b.drawdown; });
    json.Column("exposure", equity, [](const nxEquityBucket& b) { return b.exposure; });
    json.EndObject();
    WriteTrips(json, result, data.trips, budget.trips);
    WriteOrders(json, result, data, budget);
}

void nxWriteMarkets(nxJsonWriter& json, const nxResult& result, const nxResultBudget& budget)
{
    json.Key("products").BeginArray();
    for (const nxResultProduct& product : result.products)
        if (product.fillCount != 0 ||
            std::ranges::find(result.orders, product.name, &nxResultOrder::product) != result.orders.end())
            WriteProduct(json, product, budget);
    json.EndArray();
    json.Key("lines").BeginArray();
    for (const nxResultLine& line : result.lines)
        WriteLine(json, line, budget);
    json.EndArray();
    json.Key("log").BeginObject();
    json.Key("all").Count(result.logCount);
    json.Key("rows").BeginArray();
    for (const nxResultLog& row : result.log) {
        json.BeginArray();
        json.Number(GetMilliseconds(row.time));
        for (const std::string* text : {&row.job, &row.level, &row.text})
            json.Text(*text);
        json.EndArray();
    }
    json.EndArray();
    json.EndObject();
    WriteFailures(json, result.failures);
}
