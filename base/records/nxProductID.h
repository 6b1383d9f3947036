#pragma once

#include <string>

#include "base/enums/nxProductTypeEnum.h"

// An exact product identity. Its text is what a host looks the product up by.
class nxProductID
{
public:
    nxProductID() = default;
    explicit nxProductID(const std::string& name, const nxProductTypeEnum& productType = {},
                         const std::string& exchange = {});
    nxProductID(const nxProductID&) = default;
    nxProductID& operator=(const nxProductID&) = default;
    virtual ~nxProductID() = default;

    // The name, or "exchange:name" where an exchange is given.
    const std::string& GetAsString() const { return _text; }
    const std::string& GetName() const { return _name; }
    const nxProductTypeEnum& GetProductType() const { return _productType; }
    const std::string& GetExchange() const { return _exchange; }

private:
    std::string _text;
    std::string _name;
    nxProductTypeEnum _productType;
    std::string _exchange;
};
