#pragma once

#include <string>

#include "base/enums/nxProductTypeEnum.h"
#include "base/records/nxProductID.h"

// A product's identity, possibly partial: a field that is empty or "*" stands for any.
class nxGenericProductID
{
public:
    // The count of fields of an indexed map key.
    static constexpr unsigned int IndexedMapFieldCount = 9;

    nxGenericProductID() = default;
    explicit nxGenericProductID(const std::string& name, const nxProductTypeEnum& productType = {},
                                const std::string& exchange = {});
    explicit nxGenericProductID(const nxProductID& productID);

    const std::string& GetName() const { return _name; }
    const nxProductTypeEnum& GetProductType() const { return _productType; }
    const std::string& GetExchange() const { return _exchange; }

    // For logs: as nxProductID::GetAsString, with "*" for a name that is not given.
    std::string GetAsString() const;
    // type code, name, exchange, joined by '.' and filled up with "*" to IndexedMapFieldCount fields. A '.'
    // inside a field is written "%2E" and a '%' "%25", so that a name never falls into two fields.
    std::string GetAsIndexedMapKey() const;
    // The exact identity, owned by the caller; null when the name is not given.
    nxProductID* GetAsProductID() const;

    bool operator==(const nxGenericProductID&) const = default;

private:
    std::string _name;
    nxProductTypeEnum _productType;
    std::string _exchange;
};
