#pragma once

#include <map>
#include <string>

#include "scriptFramework/job/nxAlgoJobInterface.h"

// A host that knows nothing and does nothing, and agrees to every subscription: to derive from, so that a
// host states only what it does.
class nxQuietJobInterface : public nxAlgoJobInterface
{
public:
    nxAlgoProductObject* GetProduct(const std::string&) override { return nullptr; }
    nxErrorEnum SubscribePrices(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum UnsubscribePrices(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum SubscribePrice(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum UnsubscribePrice(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum SubscribeMarketDepth(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum UnsubscribeMarketDepth(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum SubscribePositions(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum UnsubscribePositions(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum SubscribeState(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum UnsubscribeState(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum SubscribePAndL(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum UnsubscribePAndL(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum SubscribePriceTradeVolumes(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum UnsubscribePriceTradeVolumes(nxAlgoProductObject*) override { return {}; }
    void LogText(const std::string&) override {}
    void StartTimer(const std::string&, unsigned int) override {}
    void StopTimer(const std::string&) override {}
    void Shutdown() override {}
    nxAlgoVorantJobCollectionObject* GetVorantJobs() override { return nullptr; }
    nxAlgoOrderCollectionObject* GetOrders() override { return nullptr; }
    nxAlgoOrderCollectionObject* GetJobOrders() override { return nullptr; }
    nxAlgoOrderObject* CreateOrder(nxAlgoProductObject*, const std::string&, const std::string&,
                                   const std::string&, const std::string&, const std::string&) override
    {
        return nullptr;
    }
    nxVolume GetID() override { return {}; }
    void SendUserState(const nxLogLevelEnum&, const std::string&) override {}
    void SendUserText1(const std::string&) override {}
    void SendUserText2(const std::string&) override {}
    void SendUserText3(const std::string&) override {}
    bool SetParameter(const std::string&, const std::string&) override { return false; }
    bool SendUserLog(const std::map<std::string, std::string>&, std::string&) override { return false; }
    void PublishParameter(const std::string&, const std::string&) override {}
    void SetTag(const std::string&) override {}
    std::string GetTag() override { return {}; }
    void SetOrderUserString(const std::string&) override {}
    void SetOrderUserString2(const std::string&) override {}
    std::string GetDynamicParameter(const std::string&, std::string) override { return {}; }
    void AddEventReference() override {}
    void ReleaseEventReference() override {}
    bool HasEventReference() const override { return false; }
    nxErrorEnum CheckOrderTransactionCount() override { return {}; }
    nxErrorEnum CanSubmitChildOrder(const nxOrder&, std::string&) override { return {}; }
    nxErrorEnum CanAmendChildOrder(const nxOrder&, std::string&) override { return {}; }
    bool IsActive() const override { return true; }
    nxVorantParameter* GetParameter(const std::string&) const override { return nullptr; }
    std::string GetSelectedProduct() override { return {}; }
    unsigned int GetSelectedVolume() const override { return 0; }
    double GetSelectedPrice() const override { return 0.0; }
    std::string GetSelectedSide() override { return {}; }
    std::string GetSelectedSpreadSpec() override { return {}; }
    void SetSelectedPrice(const double&) override {}
    unsigned int GetTransactionCount() override { return 0; }
    nxAlgoOrderObject* GetOrder(unsigned int) override { return nullptr; }
    nxAlgoDataSeriesObject* CreateDataSeries() override { return nullptr; }
    nxAlgoDataStoreObject* GetDataStore(const std::string&, bool) override { return nullptr; }
    void SendParameter(const std::string&, const std::string&, const std::string&) override {}
    void SetEnableCrossProtection(bool) override {}
    void SetShatterOnExit(bool) override {}
    void SetDisableParentFills(bool) override {}
    void StartEventWindowTimer(nxAlgoEventWindowObject*, double) override {}
    void StopEventWindowTimer(nxAlgoEventWindowObject*) override {}
    void OnEventWindow(nxAlgoEventWindowObject&) override {}
    void OnTickData(nxAlgoTickDataObject&) override {}
    nxAlgoLibraryObject* LoadLibrary(const std::string&) override { return nullptr; }
    void SetError(const std::string&) override {}
    std::string GetError() override { return {}; }
    std::string GetAccount() override { return {}; }
    bool HasContext() override { return false; }
    void SetReference(const std::string&) override {}
    void SetDisableReport(bool) override {}
    bool IsInOnInit() override { return false; }
    void SetEnablePandL(bool) override {}
    nxDecimal GetPandL(const nxCurrencyEnum&) override { return {}; }
    bool SetChartLine(const std::string&, const std::string&, double, unsigned int) override { return false; }
    bool RemoveChartLine(const std::string&, const std::string&) override { return false; }
};
