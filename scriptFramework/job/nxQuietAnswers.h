#pragma once

#include <string>

#include "scriptFramework/job/nxAlgoJobInterface.h"

// Answers with nothing to what nxPartialJobInterface leaves open, and agrees to every subscription. Base is
// that class or one derived from it, such as nxAlgoScriptValidator.
template <class Base>
class nxQuietAnswers : public Base
{
public:
    using Base::Base;

    nxErrorEnum SubscribePrice(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum UnsubscribePrice(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum SubscribeMarketDepth(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum UnsubscribeMarketDepth(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum SubscribeState(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum UnsubscribeState(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum SubscribePriceTradeVolumes(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum UnsubscribePriceTradeVolumes(nxAlgoProductObject*) override { return {}; }
    nxAlgoVorantJobCollectionObject* GetVorantJobs() override { return nullptr; }
    nxAlgoOrderCollectionObject* GetJobOrders() override { return nullptr; }
    std::string GetTag() override { return {}; }
    void SetOrderUserString(const std::string&) override {}
    void SetOrderUserString2(const std::string&) override {}
    unsigned int GetTransactionCount() override { return 0; }
    nxAlgoDataSeriesObject* CreateDataSeries() override { return nullptr; }
    nxAlgoDataStoreObject* GetDataStore(const std::string&, bool) override { return nullptr; }
    void SendParameter(const std::string&, const std::string&, const std::string&) override {}
    void SetEnableCrossProtection(bool) override {}
    void SetShatterOnExit(bool) override {}
    void SetDisableParentFills(bool) override {}
    void OnTickData(nxAlgoTickDataObject&) override {}
    nxAlgoLibraryObject* LoadLibrary(const std::string&) override { return nullptr; }
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
