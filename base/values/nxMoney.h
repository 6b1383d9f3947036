#pragma once

#include "base/enums/nxCurrencyEnum.h"
#include "base/values/nxDecimal.h"

// An amount in a currency. It is valid, null or no-change as its number is.
class nxMoney
{
public:
    nxMoney() = default;
    nxMoney(const nxDecimal& value, const nxCurrencyEnum& currency) : _value(value), _currency(currency) {}

    bool IsValid() const { return _value.IsValid(); }
    bool IsNull() const { return _value.IsNull(); }
    // The currency is undefined from then on.
    void SetNull() { *this = nxMoney(); }

    const nxDecimal& GetDecimalValue() const { return _value; }
    const nxCurrencyEnum& GetCurrency() const { return _currency; }

    bool operator==(const nxMoney&) const = default;

private:
    nxDecimal _value;
    nxCurrencyEnum _currency;
};
