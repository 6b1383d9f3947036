// The long lists of a result, all of bounded length.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "host/report/nxResultSections.h"
#include "host/report/nxResultText.h"

using namespace nxResultText;

namespace {

constexpr std::size_t MostRows = 10'000;

void WriteNames(nxJsonWriter& json, std::initializer_list<const char*> names)
{
    json.Key("columns").BeginArray();
    for (const char* name : names)
        json.Text(name);
    json.EndArray();
}

template <class Bucket, class Get>
void WriteColumn(nxJsonWriter& json, const char* name, const std::vector<Bucket>& buckets, Get get)
{
    json.Key(name).BeginArray();
    for (const Bucket& bucket : buckets)
        json.Number(get(bucket));
    json.EndArray();
}

template <class Bucket>
void WriteBuckets(nxJsonWriter& json, const std::vector<Bucket>& buckets, double offset)
{
    WriteColumn(json, "ms", buckets, [](const Bucket& b) { return GetMilliseconds(b.time); });
    WriteColumn(json, "low", buckets, [offset](const Bucket& b) { return offset + b.low; });
    WriteColumn(json, "high", buckets, [offset](const Bucket& b) { return offset + b.high; });
    WriteColumn(json, "close", buckets, [offset](const Bucket& b) { return offset + b.close; });
}

// All of them, or the largest by the size of their profits, in the order of their exits.
std::vector<std::size_t> ChooseTrips(const std::vector<nxRoundTrip>& trips)
{
    std::vector<std::size_t> chosen(trips.size());
    std::iota(chosen.begin(), chosen.end(), std::size_t{0});
    if (chosen.size() > MostRows) {
        std::ranges::stable_sort(chosen, std::ranges::greater(),
                                 [&](std::size_t i) { return std::abs(trips[i].profit.GetAsDouble()); });
        chosen.resize(MostRows);
        std::ranges::sort(chosen);
    }
    std::ranges::stable_sort(chosen, {}, [&](std::size_t i) { return trips[i].exitTime; });
    return chosen;
}

void WriteTrips(nxJsonWriter& json, const nxResult& result, const std::vector<nxRoundTrip>& trips)
{
    json.Key("roundTrips").BeginObject();
    json.Key("all").Count(trips.size());
    WriteNames(json, {"product", "side", "volume", "entryMs", "exitMs", "entryPrice", "exitPrice", "profit",
                      "fees", "mae", "mfe", "entryOrder", "exitOrder"});
    json.Key("rows").BeginArray();
    for (const std::size_t i : ChooseTrips(trips)) {
        const nxRoundTrip& trip = trips[i];
        json.BeginArray();
        json.Text(result.products[trip.product].name);
        json.Text(nxGetText(trip.side));
        json.Count(trip.volume);
        for (const double number : {GetMilliseconds(trip.entryTime), GetMilliseconds(trip.exitTime),
                                    trip.entryPrice, trip.exitPrice, trip.profit.GetAsDouble(),
                                    trip.fees.GetAsDouble(), trip.mae.GetAsDouble(), trip.mfe.GetAsDouble()})
            json.Number(number);
        json.Count(trip.entryOrder);
        json.Count(trip.exitOrder);
        json.EndArray();
    }
    json.EndArray();
    json.EndObject();
}

void WriteOrder(nxJsonWriter& json, const nxResultOrder& order)
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
    for (const nxResultOrder::Event& event : order.events) {
        json.BeginArray();
        json.Number(GetMilliseconds(event.time));
        json.Text(event.name);
        json.Text(event.text);
        json.EndArray();
    }
    json.EndArray();
    json.EndArray();
}

void WriteOrders(nxJsonWriter& json, const nxResult& result, const nxResultData& data)
{
    const std::string currency = nxGetCurrency(data);
    json.Key("orders").BeginObject();
    json.Key("all").Count(data.orders);
    WriteNames(json, {"order", "product", "side", "type", "volume", "price", "executed", "averagePrice",
                      "fees", "status", "sentMs", "endMs", "slippage", "events"});
    json.Key("rows").BeginArray();
    for (const nxResultOrder& order : result.orders) {
        if (data.job && order.job != result.jobs[*data.job].name) continue;
        const auto product = std::ranges::find(result.products, order.product, &nxResultProduct::name);
        if (product != result.products.end() && product->currency == currency) WriteOrder(json, order);
    }
    json.EndArray();
    json.EndObject();
}

void WriteProduct(nxJsonWriter& json, const nxResultProduct& product)
{
    json.BeginObject();
    json.Key("name").Text(product.name);
    json.Key("currency").Text(product.currency);
    json.Key("pointValue").Number(product.pointValue);
    json.Key("tickSize").Number(product.tickSize);
    json.Key("prices").BeginObject();
    WriteBuckets(json, product.prices.Get(), 0.0);
    json.EndObject();
    json.Key("fills").BeginObject();
    json.Key("all").Count(product.fillCount);
    WriteNames(json, {"ms", "job", "side", "price", "volume", "maker", "order"});
    json.Key("rows").BeginArray();
    for (const nxResultProduct::Fill& fill : product.fills) {
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
void WriteLine(nxJsonWriter& json, const nxResultLine& line)
{
    std::vector<std::pair<long long, double>> points;
    for (const nxPriceBucket& bucket : line.values.Get()) {
        const bool isUp = bucket.high - bucket.close <= bucket.close - bucket.low;
        if (bucket.low != bucket.high) points.emplace_back(bucket.time, isUp ? bucket.low : bucket.high);
        points.emplace_back(bucket.time, isUp ? bucket.high : bucket.low);
    }
    json.BeginObject();
    json.Key("job").Text(line.job);
    json.Key("chart").Text(line.chart);
    json.Key("line").Text(line.line);
    json.Key("colour").Count(line.colour);
    WriteColumn(json, "ms", points, [](const auto& point) { return GetMilliseconds(point.first); });
    WriteColumn(json, "value", points, [](const auto& point) { return point.second; });
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

void nxWriteSeries(nxJsonWriter& json, const nxResult& result, const nxResultData& data)
{
    const std::vector<nxEquityBucket>& equity = data.equity.Get();
    json.Key("equity").BeginObject();
    WriteBuckets(json, equity, result.run.capital.value_or(0.0));
    WriteColumn(json, "drawdown", equity, [](const nxEquityBucket& b) { return b.drawdown; });
    WriteColumn(json, "exposure", equity, [](const nxEquityBucket& b) { return b.exposure; });
    json.EndObject();
    WriteTrips(json, result, data.trips);
    WriteOrders(json, result, data);
}

void nxWriteMarkets(nxJsonWriter& json, const nxResult& result)
{
    json.Key("products").BeginArray();
    for (const nxResultProduct& product : result.products)
        if (product.fillCount != 0 ||
            std::ranges::find(result.orders, product.name, &nxResultOrder::product) != result.orders.end())
            WriteProduct(json, product);
    json.EndArray();
    json.Key("lines").BeginArray();
    for (const nxResultLine& line : result.lines)
        WriteLine(json, line);
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
