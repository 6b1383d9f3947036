#include "host/feed/nxProductFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <toml.hpp>

#include "base/values/nxStringHelper.h"

namespace {

// How a wrong file is told from within the reading; never leaves this file.
struct Refusal
{
    nxFeedError error;
};

class Reader
{
public:
    explicit Reader(const std::string& path) : _path(path) {}

    [[noreturn]] void Refuse(const toml::value& at, const std::string& reason) const
    {
        const toml::source_location place = at.location();
        throw Refusal{{_path, place.line(), static_cast<unsigned>(place.column()), reason}};
    }

    // The keys of a table in the order of the file, so that the first fault is the one told.
    std::vector<std::pair<std::string, const toml::value*>> GetEntries(const toml::value& table,
                                                                       const std::string& name) const
    {
        if (!table.is_table()) Refuse(table, name + " is no table; write [[" + name + "]]");
        std::vector<std::pair<std::string, const toml::value*>> entries;
        for (const auto& [key, value] : table.as_table())
            entries.emplace_back(key, &value);
        std::ranges::sort(entries, {}, [](const auto& entry) {
            return std::make_tuple(entry.second->location().line(), entry.second->location().column(),
                                   entry.first);
        });
        return entries;
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

    [[noreturn]] void RefuseKey(const toml::value& value, const std::string& key,
                                const std::string& known) const
    {
        Refuse(value, fmt::format("unknown key \"{}\"; known are {}", key, known));
    }

private:
    const std::string& _path;
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

// The parser's report is a drawing of several lines; its first one holds the reason behind the parser's own
// names.
std::string GetReason(std::string_view report)
{
    report = report.substr(0, report.find('\n'));
    const std::size_t names = report.rfind("toml::");
    const std::size_t colon = names == report.npos ? report.npos : report.find(": ", names);
    if (colon != report.npos) report.remove_prefix(colon + 2);
    return report.empty() ? "is not TOML" : std::string(report);
}

}  // namespace

bool nxProductFile::Read(const std::string& path, std::vector<nxProductDescription>& products,
                         nxFeedError& error)
{
    try {
        if (std::filesystem::is_directory(path)) {
            error = {path, 0, 0, "is a directory, not a file of products"};
            return false;
        }
        std::ifstream stream(path, std::ios::binary);
        if (!stream)
            error = {path, 0, 0, std::string("cannot open: ") + std::strerror(errno)};
        else {
            const Reader reader(path);
            std::vector<nxProductDescription> read = GetProducts(reader, toml::parse(stream, path));
            products.insert(products.end(), read.begin(), read.end());
            return true;
        }
    } catch (const Refusal& refusal) {
        error = refusal.error;
    } catch (const toml::exception& failure) {
        const toml::source_location& place = failure.location();
        error = {path, place.line(), static_cast<unsigned>(place.column()), GetReason(failure.what())};
    } catch (const std::exception& failure) {
        error = {path, 0, 0, GetReason(failure.what())};
    }
    return false;
}
