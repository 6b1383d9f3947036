#include "base/records/nxGenericProductID.h"

#include <initializer_list>
#include <string_view>

namespace {

constexpr char Wildcard[] = "*";

bool IsGiven(std::string_view field)
{
    return !field.empty() && field != Wildcard;
}

void AppendField(std::string& key, std::string_view field)
{
    if (!key.empty()) key += '.';
    if (!IsGiven(field)) {
        key += Wildcard;
        return;
    }
    for (const char c : field) {
        if (c == '.')
            key += "%2E";
        else if (c == '%')
            key += "%25";
        else
            key += c;
    }
}

}  // namespace

nxGenericProductID::nxGenericProductID(const std::string& name, const nxProductTypeEnum& productType,
                                       const std::string& exchange)
    : _name(name), _productType(productType), _exchange(exchange)
{
}

nxGenericProductID::nxGenericProductID(const nxProductID& productID)
    : nxGenericProductID(productID.GetName(), productID.GetProductType(), productID.GetExchange())
{
}

std::string nxGenericProductID::GetAsString() const
{
    const std::string name = IsGiven(_name) ? _name : Wildcard;
    return IsGiven(_exchange) ? _exchange + ":" + name : name;
}

std::string nxGenericProductID::GetAsIndexedMapKey() const
{
    const std::initializer_list<std::string_view> fields = {_productType.GetAsCode(), _name, _exchange};
    std::string key;
    for (const std::string_view field : fields)
        AppendField(key, field);
    for (std::size_t i = fields.size(); i < IndexedMapFieldCount; ++i)
        AppendField(key, {});
    return key;
}

nxProductID* nxGenericProductID::GetAsProductID() const
{
    if (!IsGiven(_name)) return nullptr;
    return new nxProductID(_name, _productType, IsGiven(_exchange) ? _exchange : std::string());
}
