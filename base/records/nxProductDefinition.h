#pragma once

#include <string>

#include "base/records/nxDataObject.h"
#include "base/records/nxGenericProductID.h"
#include "base/values/nxMoney.h"
#include "base/values/nxPriceManipulator.h"

// A product's static data: who it is, and the rules of its prices and volumes.
class nxProductDefinition : public nxDataObject
{
public:
    nxProductDefinition* CopyInstance() const override { return new nxProductDefinition(*this); }

    const nxGenericProductID& GetGenericProductID() const { return _genericProductID; }
    const std::string& GetName() const { return _name; }
    const std::string& GetDescription() const { return _description; }
    const std::string& GetExchange() const { return _exchange; }
    const nxDecimal& GetTickSize() const { return _tickSize; }
    const nxDecimal& GetLotSize() const { return _lotSize; }
    const nxMoney& GetPointValue() const { return _pointValue; }
    const nxPriceManipulator& GetPriceManipulator() const { return _priceManipulator; }

    void SetGenericProductID(const nxGenericProductID& value) { _genericProductID = value; }
    void SetName(const std::string& value) { _name = value; }
    void SetDescription(const std::string& value) { _description = value; }
    void SetExchange(const std::string& value) { _exchange = value; }
    void SetTickSize(const nxDecimal& value) { _tickSize = value; }
    void SetLotSize(const nxDecimal& value) { _lotSize = value; }
    void SetPointValue(const nxMoney& value) { _pointValue = value; }
    void SetPriceManipulator(const nxPriceManipulator& value) { _priceManipulator = value; }

private:
    nxGenericProductID _genericProductID;
    std::string _name;
    std::string _description;
    std::string _exchange;
    nxDecimal _tickSize;
    nxDecimal _lotSize;
    nxMoney _pointValue;
    nxPriceManipulator _priceManipulator;
};
