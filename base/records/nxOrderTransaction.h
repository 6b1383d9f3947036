#pragma once

#include <memory>
#include <string>

#include "base/enums/nxErrorEnum.h"
#include "base/enums/nxFillSourceEnum.h"
#include "base/enums/nxFunctionEnum.h"
#include "base/enums/nxOrderTransactionStatusEnum.h"
#include "base/records/nxExchangeOrderData.h"
#include "base/records/nxOrder.h"
#include "base/time/nxDateTime.h"

// One event on an order: what was asked or filled, with what outcome, and the order as it stands after it.
// Copies share the order and the exchange's data, which are not changed once they are here.
class nxOrderTransaction : public nxObject
{
public:
    nxOrderTransaction* CopyInstance() const override { return new nxOrderTransaction(*this); }

    // The order after this event, good while the transaction holds it; null when the event has none.
    const nxOrder* GetOrder() const { return _order.get(); }
    void SetOrder(std::shared_ptr<const nxOrder> order) { _order = std::move(order); }
    void SetOrder(const nxOrder& order) { _order = std::make_shared<const nxOrder>(order); }

    // The exchange's own data of the order, or null.
    nxExchangeOrderData* GetTemporaryExchangeOrderData() const { return _temporaryExchangeOrderData.get(); }
    void SetTemporaryExchangeOrderData(std::shared_ptr<nxExchangeOrderData> data)
    {
        _temporaryExchangeOrderData = std::move(data);
    }

    const nxFunctionEnum& GetFunction() const { return _function; }
    const nxOrderTransactionStatusEnum& GetTransactionStatus() const { return _transactionStatus; }
    const nxDateTime& GetTransactionTime() const { return _transactionTime; }
    const nxFillSourceEnum& GetFillSource() const { return _fillSource; }
    const std::string& GetFillID() const { return _fillID; }
    const std::string& GetExchangeOrderID() const { return _exchangeOrderID; }
    const std::string& GetErrorText() const { return _errorText; }
    const nxVolume& GetFillVolume() const { return _fillVolume; }
    const nxDecimal& GetFillPrice() const { return _fillPrice; }
    const nxErrorEnum& GetError() const { return _error; }

    void SetFunction(const nxFunctionEnum& value) { _function = value; }
    void SetTransactionStatus(const nxOrderTransactionStatusEnum& value) { _transactionStatus = value; }
    void SetTransactionTime(const nxDateTime& value) { _transactionTime = value; }
    void SetFillSource(const nxFillSourceEnum& value) { _fillSource = value; }
    void SetFillID(const std::string& value) { _fillID = value; }
    void SetExchangeOrderID(const std::string& value) { _exchangeOrderID = value; }
    void SetErrorText(const std::string& value) { _errorText = value; }
    void SetFillVolume(const nxVolume& value) { _fillVolume = value; }
    void SetFillPrice(const nxDecimal& value) { _fillPrice = value; }
    void SetError(const nxErrorEnum& value) { _error = value; }

private:
    std::shared_ptr<const nxOrder> _order;
    std::shared_ptr<nxExchangeOrderData> _temporaryExchangeOrderData;
    nxFunctionEnum _function;
    nxOrderTransactionStatusEnum _transactionStatus;
    nxDateTime _transactionTime;
    nxFillSourceEnum _fillSource;
    std::string _fillID;
    std::string _exchangeOrderID;
    std::string _errorText;
    nxVolume _fillVolume;
    nxDecimal _fillPrice;
    nxErrorEnum _error;
};
