#include "host/market/nxProductFile.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <unordered_set>

#include "base/values/nxStringHelper.h"
#include "host/market/nxCalendarReader.h"
#include "host/market/nxStrategyOrder.h"

namespace {

class Reader : public nxTomlFile
{
public:
    using nxTomlFile::nxTomlFile;

    Entries GetEntries(const toml::node& table, const std::string& name) const
    {
        if (!table.is_table()) Refuse(table, name + " is no table; write [[" + name + "]]");
        return nxTomlFile::GetEntries(table, {});
    }

    const toml::array& GetTables(const toml::node& value, const std::string& name) const
    {
        if (!value.is_array()) Refuse(value, name + " is no list of tables; write [[" + name + "]]");
        return *value.as_array();
    }

    nxDecimal GetNumber(const toml::node& value, const std::string& key) const
    {
        std::string text;
        if (value.is_string())
            text = value.as_string()->get();
        else if (value.is_integer())
            text = nxStringHelper::GetAsString(static_cast<long long>(value.as_integer()->get()));
        else if (value.is_floating_point())
            text = nxStringHelper::GetAsString(value.as_floating_point()->get());
        nxDecimal number;
        if (!number.SetFromString(text).IsSuccess())
            Refuse(value, key + (text.empty() ? " is not a number" : " is not a number: \"" + text + "\""));
        return number;
    }

    nxDecimal GetPositive(const toml::node& value, const std::string& key) const
    {
        const nxDecimal number = GetNumber(value, key);
        if (number <= nxDecimalZero) Refuse(value, key + " is not above 0: " + number.GetAsString());
        return number;
    }

    bool GetFlag(const toml::node& value, const std::string& key) const
    {
        if (!value.is_boolean()) Refuse(value, key + " is neither true nor false");
        return value.as_boolean()->get();
    }

    unsigned long long GetLots(const toml::node& value, const std::string& key) const
    {
        if (!value.is_integer() || *value.as_integer() <= 0)
            Refuse(value, key + " is no whole number of lots above 0");
        return static_cast<unsigned long long>(value.as_integer()->get());
    }

    nxDecimal GetTradeRatio(const toml::node& value, const std::string& key) const
    {
        constexpr nxDecimal most = nxDecimal::FromMantissa(1'000'000, 0);
        nxDecimal number = GetNumber(value, key);
        number.Normalise(0);
        if (number.GetDecimalPlaces() != 0 || number <= nxDecimalZero || number > most)
            Refuse(value, key + " is no whole number from 1 to 1000000: " + number.GetAsString());
        return number;
    }
};

nxProductLegDescription GetLeg(const Reader& reader, const toml::node& table)
{
    nxProductLegDescription leg;
    for (const auto& [key, value] : reader.GetEntries(table, "product.leg")) {
        if (key == "product")
            leg.product = reader.GetText(*value, key);
        else if (key == "side") {
            const std::string& side = reader.GetText(*value, key);
            if (side != "BUY" && side != "SELL")
                reader.Refuse(*value, "side is neither \"BUY\" nor \"SELL\"");
            leg.side = side == "BUY" ? nxSide::Buy : nxSide::Sell;
        } else if (key == "priceRatio")
            leg.priceRatio = reader.GetPositive(*value, key);
        else if (key == "tradeRatio")
            leg.tradeRatio = reader.GetTradeRatio(*value, key);
        else
            reader.RefuseKey(*value, key, "product, side, priceRatio, tradeRatio");
    }
    if (leg.product.empty()) reader.Refuse(table, "leg without a product");
    return leg;
}

void ReadLegs(const Reader& reader, const toml::node& value, nxProductDescription& product)
{
    if (product.IsStrategy()) reader.Refuse(value, "leg and legs are the same; write one of them");
    const toml::array& tables = reader.GetTables(value, "product.legs");
    std::unordered_set<std::string> names;
    for (const toml::node& table : tables) {
        const nxProductLegDescription leg = GetLeg(reader, table);
        if (!names.insert(leg.product).second)
            reader.Refuse(table, "product \"" + leg.product + "\" is a leg twice");
        product.legs.push_back(leg);
    }
    if (tables.size() < 2) reader.Refuse(value, "a strategy has at least two legs");
}

nxFeeTier GetFeeTier(const Reader& reader, const toml::node& table)
{
    nxFeeTier tier;
    for (const auto& [key, value] : reader.nxTomlFile::GetEntries(
             table, "a fee tier is a table, such as { from = 1000, takerFee = 0.5 }"))
    {
        if (key == "from")
            tier.from = reader.GetLots(*value, key);
        else if (key == "makerFee")
            tier.makerFee = reader.GetNumber(*value, key);
        else if (key == "takerFee")
            tier.takerFee = reader.GetNumber(*value, key);
        else
            reader.RefuseKey(*value, key, "from, makerFee, takerFee");
    }
    if (tier.from == 0) reader.Refuse(table, "fee tier without the lots from which it holds; write from");
    return tier;
}

void ReadFeeTiers(const Reader& reader, const toml::node& value, nxProductDescription& product)
{
    if (!value.is_array()) reader.Refuse(value, "feeTiers is no list of tables; write [[product.feeTiers]]");
    for (const toml::node& table : *value.as_array()) {
        const nxFeeTier tier = GetFeeTier(reader, table);
        if (!product.feeTiers.empty() && tier.from <= product.feeTiers.back().from)
            reader.Refuse(table, "fee tiers come in the order of their lots, each from more than the last");
        product.feeTiers.push_back(tier);
    }
}

bool IsFeeKey(const std::string& key)
{
    return key == "makerFee" || key == "takerFee" || key == "feeIsRate" || key == "minimumFee" ||
           key == "feeTiers" || key == "feeTierPeriod";
}

void ReadFees(const Reader& reader, const std::string& key, const toml::node& value,
              nxProductDescription& product)
{
    if (key == "makerFee")
        product.makerFee = reader.GetNumber(value, key);
    else if (key == "takerFee")
        product.takerFee = reader.GetNumber(value, key);
    else if (key == "minimumFee")
        product.minimumFee = reader.GetPositive(value, key);
    else if (key == "feeTiers")
        ReadFeeTiers(reader, value, product);
    else if (key == "feeTierPeriod") {
        const std::string& period = reader.GetText(value, key);
        if (period != "run" && period != "month")
            reader.Refuse(value, "feeTierPeriod is neither \"run\" nor \"month\"");
        product.feeTiersByMonth = period == "month";
    } else
        product.feeIsRate = reader.GetFlag(value, key);
}

nxProductDescription GetProduct(const Reader& reader, const nxCalendarReader& calendars,
                                const toml::node& table)
{
    nxProductDescription product;
    bool hasHours = false;
    for (const auto& [key, value] : reader.GetEntries(table, "product")) {
        if (key == "name")
            product.name = reader.GetText(*value, key);
        else if (key == "tickSize")
            product.tickSize = reader.GetPositive(*value, key);
        else if (key == "lotSize")
            product.lotSize = reader.GetPositive(*value, key);
        else if (key == "pointValue")
            product.pointValue = reader.GetPositive(*value, key);
        else if (key == "currency") {
            const std::string& code = reader.GetText(*value, key);
            if (!product.currency.SetFromString(code))
                reader.Refuse(*value, "unknown currency \"" + code + "\"");
        } else if (key == "exchange")
            product.exchange = reader.GetText(*value, key);
        else if (key == "description")
            product.description = reader.GetText(*value, key);
        else if (IsFeeKey(key))
            ReadFees(reader, key, *value, product);
        else if (key == "dailyVolatility")
            product.dailyVolatility = reader.GetPositive(*value, key);
        else if (key == "dailyVolume")
            product.dailyVolume = reader.GetPositive(*value, key);
        else if (key == "initialMargin")
            product.initialMargin = reader.GetPositive(*value, key);
        else if (key == "maintenanceMargin")
            product.maintenanceMargin = reader.GetPositive(*value, key);
        else if (key == "marginIsRate")
            product.marginIsRate = reader.GetFlag(*value, key);
        else if (key == "leg" || key == "legs") {
            ReadLegs(reader, *value, product);
        } else if (key == "priceOffset")
            product.priceOffset = reader.GetNumber(*value, key);
        else if (nxCalendarReader::IsKey(key))
            hasHours = true;
        else
            reader.RefuseKey(
                *value, key,
                "name, tickSize, lotSize, pointValue, currency, exchange, description, tradingHours, zone, "
                "holidays, shortDays, calendar, makerFee, takerFee, feeIsRate, minimumFee, feeTiers, "
                "feeTierPeriod, initialMargin, maintenanceMargin, marginIsRate, dailyVolatility, "
                "dailyVolume, legs, priceOffset");
    }
    if (product.name.empty()) reader.Refuse(table, "product without a name");
    if (const toml::node* offset = reader.Find(table, "priceOffset"); offset && !product.IsStrategy())
        reader.Refuse(*offset, "only a strategy, which has legs, has a priceOffset");
    if (product.IsStrategy())
        for (const auto& [key, value] : reader.GetEntries(table, "product"))
            if (nxCalendarReader::IsKey(key))
                reader.Refuse(*value, "a strategy has no " + key + ": it is open while its legs are");
    if (hasHours) product.tradingHours = calendars.GetHours(table);
    return product;
}

// What only all products together can tell of the legs. `tables` stand where the products do.
void CheckLegs(const Reader& reader, const std::vector<nxProductDescription>& products,
               const std::vector<const toml::node*>& tables)
{
    std::unordered_map<std::string_view, std::size_t> indexes;
    for (std::size_t i = 0; i < products.size(); ++i)
        if (!indexes.emplace(products[i].name, i).second)
            reader.Refuse(*tables[i], "product \"" + products[i].name + "\" described twice");
    for (std::size_t i = 0; i < products.size(); ++i) {
        for (std::size_t leg = 0; leg < products[i].legs.size(); ++leg) {
            const std::string& name = products[i].legs[leg].product;
            if (indexes.contains(name)) continue;
            const toml::node* legs = reader.Find(*tables[i], "legs");
            if (legs == nullptr) legs = reader.Find(*tables[i], "leg");
            reader.Refuse(*reader.Find((*legs->as_array())[leg], "product"),
                          "leg of a product that is not described: \"" + name + "\"");
        }
    }
    const nxStrategyOrder order(products);
    if (order.cycle.empty()) return;
    std::string names;
    for (const std::size_t i : order.cycle)
        names += products[i].name + " -> ";
    reader.Refuse(*tables[order.cycle.front()],
                  "a strategy is among its own legs: " + names + products[order.cycle.front()].name);
}

// A period that every host knows is the same on all of them.
nxNamedBars GetNamedBars(const Reader& reader, const toml::node& table)
{
    nxNamedBars named;
    for (const auto& [key, value] : reader.nxTomlFile::GetEntries(table, "bars is no table; write [bars]")) {
        nxTickDataPeriodEnum known;
        if (known.SetFromString(key))
            reader.Refuse(*value, "bars: every script knows " + key + " already; choose another name");
        if (const char* reason = nxBarTerms::SetFromText(reader.GetText(*value, key), named[key]))
            reader.Refuse(*value, "bars: " + std::string(reason));
    }
    return named;
}

std::vector<nxProductDescription> GetProducts(const Reader& reader, const toml::node& root)
{
    nxCalendarReader calendars(reader);
    if (const toml::node* table = reader.Find(root, "calendar")) calendars.ReadCalendars(*table);
    std::vector<nxProductDescription> products;
    std::vector<const toml::node*> tables;
    for (const auto& [key, value] : reader.GetEntries(root, "product")) {
        if (key == "calendar" || key == "bars") continue;
        if (key != "product") reader.RefuseKey(*value, key, "product, calendar, bars");
        const toml::array& described = reader.GetTables(*value, "product");
        products.reserve(described.size());
        tables.reserve(described.size());
        for (const toml::node& table : described) {
            products.push_back(GetProduct(reader, calendars, table));
            tables.push_back(&table);
        }
    }
    CheckLegs(reader, products, tables);
    return products;
}

}  // namespace

bool nxProductFile::Read(const std::string& path, std::vector<nxProductDescription>& products,
                         nxFeedError& error, nxNamedBars* bars)
{
    const Reader reader(path);
    const auto read = [&](const toml::node& root) {
        std::vector<nxProductDescription> added = GetProducts(reader, root);
        nxNamedBars named;
        if (const toml::node* table = reader.Find(root, "bars")) named = GetNamedBars(reader, *table);
        if (bars != nullptr) bars->merge(named);
        if (products.empty())
            products = std::move(added);
        else
            std::ranges::move(added, std::back_inserter(products));
    };
    return reader.Read("file of products", read, error);
}
