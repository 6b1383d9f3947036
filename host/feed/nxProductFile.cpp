#include "host/feed/nxProductFile.h"

#include <algorithm>

#include "base/values/nxStringHelper.h"
#include "host/feed/nxTomlFile.h"

namespace {

class Reader : public nxTomlFile
{
public:
    using nxTomlFile::nxTomlFile;

    Entries GetEntries(const toml::value& table, const std::string& name) const
    {
        return nxTomlFile::GetEntries(table, name + " is no table; write [[" + name + "]]");
    }

    const toml::array& GetTables(const toml::value& value, const std::string& name) const
    {
        if (!value.is_array()) Refuse(value, name + " is no list of tables; write [[" + name + "]]");
        return value.as_array();
    }

    const std::string& GetText(const toml::value& value, const std::string& key) const
    {
        if (!value.is_string() || value.as_string().str.empty())
            Refuse(value, key + " is not a text in quotes");
        return value.as_string().str;
    }

    nxDecimal GetNumber(const toml::value& value, const std::string& key) const
    {
        std::string text;
        if (value.is_string())
            text = value.as_string().str;
        else if (value.is_integer())
            text = nxStringHelper::GetAsString(static_cast<long long>(value.as_integer()));
        else if (value.is_floating())
            text = nxStringHelper::GetAsString(value.as_floating());
        nxDecimal number;
        if (!number.SetFromString(text).IsSuccess())
            Refuse(value, key + (text.empty() ? " is not a number" : " is not a number: \"" + text + "\""));
        return number;
    }

    nxDecimal GetPositive(const toml::value& value, const std::string& key) const
    {
        const nxDecimal number = GetNumber(value, key);
        if (number <= nxDecimalZero) Refuse(value, key + " is not above 0: " + number.GetAsString());
        return number;
    }
};

nxProductLegDescription GetLeg(const Reader& reader, const toml::value& table)
{
    nxProductLegDescription leg;
    for (const auto& [key, value] : reader.GetEntries(table, "product.leg")) {
        if (key == "product")
            leg.product = reader.GetText(*value, key);
        else if (key == "side") {
            const std::string& side = reader.GetText(*value, key);
            if (side != "BUY" && side != "SELL")
                reader.Refuse(*value, "side is neither \"BUY\" nor \"SELL\"");
            leg.side = side == "BUY" ? nxBuySell_Buy : nxBuySell_Sell;
        } else if (key == "priceRatio")
            leg.priceRatio = reader.GetNumber(*value, key);
        else if (key == "tradeRatio")
            leg.tradeRatio = reader.GetNumber(*value, key);
        else
            reader.RefuseKey(*value, key, "product, side, priceRatio, tradeRatio");
    }
    if (leg.product.empty()) reader.Refuse(table, "leg without a product");
    return leg;
}

nxProductDescription GetProduct(const Reader& reader, const toml::value& table)
{
    nxProductDescription product;
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
        else if (key == "tradingHours") {
            if (const char* reason =
                    nxTradingHours::SetFromText(reader.GetText(*value, key), product.tradingHours))
                reader.Refuse(*value, key + ": " + reason);
        } else if (key == "makerFee")
            product.makerFee = reader.GetNumber(*value, key);
        else if (key == "takerFee")
            product.takerFee = reader.GetNumber(*value, key);
        else if (key == "feeIsRate") {
            if (!value->is_boolean())
                reader.Refuse(*value, "feeIsRate is neither true nor false");
            else
                product.feeIsRate = value->as_boolean();
        } else if (key == "leg") {
            for (const toml::value& leg : reader.GetTables(*value, "product.leg"))
                product.legs.push_back(GetLeg(reader, leg));
        } else
            reader.RefuseKey(
                *value, key,
                "name, tickSize, lotSize, pointValue, currency, exchange, description, tradingHours, "
                "makerFee, takerFee, feeIsRate, leg");
    }
    if (product.name.empty()) reader.Refuse(table, "product without a name");
    return product;
}

std::vector<nxProductDescription> GetProducts(const Reader& reader, const toml::value& root)
{
    std::vector<nxProductDescription> products;
    for (const auto& [key, value] : reader.GetEntries(root, "product")) {
        if (key != "product") reader.RefuseKey(*value, key, "product");
        for (const toml::value& table : reader.GetTables(*value, "product")) {
            products.push_back(GetProduct(reader, table));
            const std::string& name = products.back().name;
            if (std::ranges::count(products, name, &nxProductDescription::name) > 1)
                reader.Refuse(table, "product \"" + name + "\" described twice");
        }
    }
    return products;
}

}  // namespace

bool nxProductFile::Read(const std::string& path, std::vector<nxProductDescription>& products,
                         nxFeedError& error)
{
    const Reader reader(path);
    const auto read = [&](const toml::value& root) {
        const std::vector<nxProductDescription> added = GetProducts(reader, root);
        products.insert(products.end(), added.begin(), added.end());
    };
    return reader.Read("products", read, error);
}
