#pragma once

#include <string>

#include "base/enums/nxBuySellEnum.h"
#include "base/enums/nxExecutionRestrictionEnum.h"
#include "base/enums/nxOrderFlagEnum.h"
#include "base/enums/nxOrderStatusEnum.h"
#include "base/enums/nxOrderTypeEnum.h"
#include "base/records/nxObject.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"

// An order's state after one of its transactions. Prices, volumes and ids are null until they are set. The
// residual volume is what is still working in the market.
class nxOrder : public nxObject
{
public:
    nxOrder* CopyInstance() const override { return new nxOrder(*this); }

    const nxVolume& GetOrderID() const { return _orderID; }
    const nxVolume& GetUserID() const { return _userID; }
    const nxVolume& GetAccountID() const { return _accountID; }
    const std::string& GetProductName() const { return _productName; }
    const std::string& GetReference() const { return _reference; }
    const nxBuySellEnum& GetBuySell() const { return _buySell; }
    const nxOrderTypeEnum& GetOrderType() const { return _orderType; }
    const nxExecutionRestrictionEnum& GetExecutionRestriction() const { return _executionRestriction; }
    const nxOrderStatusEnum& GetOrderStatus() const { return _orderStatus; }
    const nxOrderFlagEnum& GetOrderFlag() const { return _orderFlag; }
    const nxDecimal& GetPrice() const { return _price; }
    const nxDecimal& GetStopPrice() const { return _stopPrice; }
    const nxVolume& GetVolume() const { return _volume; }
    const nxVolume& GetExecutedVolume() const { return _executedVolume; }
    const nxVolume& GetResidualVolume() const { return _residualVolume; }
    const nxDecimal& GetAverageFillPrice() const { return _averageFillPrice; }

    void SetOrderID(const nxVolume& value) { _orderID = value; }
    void SetUserID(const nxVolume& value) { _userID = value; }
    void SetAccountID(const nxVolume& value) { _accountID = value; }
    void SetProductName(const std::string& value) { _productName = value; }
    void SetReference(const std::string& value) { _reference = value; }
    void SetBuySell(const nxBuySellEnum& value) { _buySell = value; }
    void SetOrderType(const nxOrderTypeEnum& value) { _orderType = value; }
    void SetExecutionRestriction(const nxExecutionRestrictionEnum& value) { _executionRestriction = value; }
    void SetOrderStatus(const nxOrderStatusEnum& value) { _orderStatus = value; }
    void SetOrderFlag(const nxOrderFlagEnum& value) { _orderFlag = value; }
    void SetPrice(const nxDecimal& value) { _price = value; }
    void SetStopPrice(const nxDecimal& value) { _stopPrice = value; }
    void SetVolume(const nxVolume& value) { _volume = value; }
    void SetExecutedVolume(const nxVolume& value) { _executedVolume = value; }
    void SetResidualVolume(const nxVolume& value) { _residualVolume = value; }
    void SetAverageFillPrice(const nxDecimal& value) { _averageFillPrice = value; }

private:
    nxVolume _orderID;
    nxVolume _userID;
    nxVolume _accountID;
    std::string _productName;
    std::string _reference;
    nxBuySellEnum _buySell;
    nxOrderTypeEnum _orderType;
    nxExecutionRestrictionEnum _executionRestriction;
    nxOrderStatusEnum _orderStatus;
    nxOrderFlagEnum _orderFlag;
    nxDecimal _price;
    nxDecimal _stopPrice;
    nxVolume _volume;
    nxVolume _executedVolume;
    nxVolume _residualVolume;
    nxDecimal _averageFillPrice;
};
