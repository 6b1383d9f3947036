#pragma once

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "scriptFramework/job/nxAlgoJobInterface.h"
#include "scriptFramework/market/nxAlgoProductObject.h"

// A host for tests: it writes down every call of the library as one line of text, and answers with what the
// test has set.
class nxRecordingHost : public nxAlgoJobInterface
{
public:
    std::vector<std::string> calls;
    nxErrorEnum subscriptionAnswer;
    std::string throwOnLogText;  // not empty: LogText throws a std::runtime_error with it
    std::string logPrefix = "[test] ";
    class nxAlgoJobObject* stopOnShutdown = nullptr;
    // Last, since their destructors call this host.
    std::map<std::string, std::unique_ptr<nxAlgoProductObject>> products;

    // The calls since the last time, joined by blanks.
    std::string TakeCalls();

    nxAlgoProductObject* GetProduct(const std::string& name) override;
    nxErrorEnum SubscribePrices(nxAlgoProductObject*) override { return _Answer("SubscribePrices"); }
    nxErrorEnum UnsubscribePrices(nxAlgoProductObject*) override { return _Answer("UnsubscribePrices"); }
    nxErrorEnum SubscribePrice(nxAlgoProductObject*) override { return _Answer("SubscribePrice"); }
    nxErrorEnum UnsubscribePrice(nxAlgoProductObject*) override { return _Answer("UnsubscribePrice"); }
    nxErrorEnum SubscribeMarketDepth(nxAlgoProductObject*) override
    {
        return _Answer("SubscribeMarketDepth");
    }
    nxErrorEnum UnsubscribeMarketDepth(nxAlgoProductObject*) override
    {
        return _Answer("UnsubscribeMarketDepth");
    }
    nxErrorEnum SubscribePositions(nxAlgoProductObject*) override { return _Answer("SubscribePositions"); }
    nxErrorEnum UnsubscribePositions(nxAlgoProductObject*) override
    {
        return _Answer("UnsubscribePositions");
    }
    nxErrorEnum SubscribeState(nxAlgoProductObject*) override { return _Answer("SubscribeState"); }
    nxErrorEnum UnsubscribeState(nxAlgoProductObject*) override { return _Answer("UnsubscribeState"); }
    nxErrorEnum SubscribePAndL(nxAlgoProductObject*) override { return _Answer("SubscribePAndL"); }
    nxErrorEnum UnsubscribePAndL(nxAlgoProductObject*) override { return _Answer("UnsubscribePAndL"); }
    nxErrorEnum SubscribePriceTradeVolumes(nxAlgoProductObject*) override
    {
        return _Answer("SubscribePriceTradeVolumes");
    }
    nxErrorEnum UnsubscribePriceTradeVolumes(nxAlgoProductObject*) override
    {
        return _Answer("UnsubscribePriceTradeVolumes");
    }
    void LogText(const std::string& text) override;
    void StartTimer(const std::string& name, unsigned int interval) override;
    void StopTimer(const std::string& name) override { calls.push_back("StopTimer(" + name + ")"); }
    void Shutdown() override;
    const std::string& GetLogPrefix() const override { return logPrefix; }

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

private:
    nxErrorEnum _Answer(const char* call);
};
