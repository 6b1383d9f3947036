#pragma once

#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "scriptFramework/analytics/nxAlgoDataSeriesObject.h"
#include "scriptFramework/job/nxQuietJobInterface.h"
#include "scriptFramework/market/nxAlgoProductObject.h"
#include "scriptFramework/supervision/nxVorantParameter.h"

// A host for tests: it writes down every call of the library as one line of text, and answers with what the
// test has set.
class nxRecordingHost : public nxQuietJobInterface
{
public:
    std::vector<std::string> calls;
    nxErrorEnum subscriptionAnswer;
    std::string throwOnLogText;  // not empty: LogText throws a std::runtime_error with it
    std::string logPrefix = "[test] ";
    class nxAlgoJobObject* stopOnShutdown = nullptr;
    std::string refusal;  // not empty: SetParameter, SendUserLog and the chart lines are refused, with it
    bool hasContext = false;
    bool inOnInit = false;
    std::string lastError;  // what GetError answers
    nxDecimal pandL;
    std::map<std::string, std::unique_ptr<nxVorantParameter>> parameters;
    nxAlgoVorantJobCollectionObject* vorantJobs = nullptr;
    nxAlgoOrderObject* order12 = nullptr;  // the only order that GetOrder knows
    nxAlgoOrderCollectionObject* orders = nullptr;
    nxAlgoOrderCollectionObject* jobOrders = nullptr;
    std::vector<std::unique_ptr<nxAlgoDataSeriesObject>> series;  // those that the script has created
    nxAlgoLibraryObject* library = nullptr;                       // what LoadLibrary answers
    class nxAlgoJobObject* windowJob = nullptr;                   // to which trade windows' news go on
    nxAlgoDataStoreObject* dataStore = nullptr;  // named "old", or any when it may be created
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
    std::function<void(nxAlgoTickDataObject&)> onTickData;
    void OnTickData(nxAlgoTickDataObject& tick) override
    {
        if (onTickData) onTickData(tick);
    }
    void LogText(const std::string& text) override;
    void StartTimer(const std::string& name, unsigned int interval) override;
    void StartEventWindowTimer(nxAlgoEventWindowObject*, double interval) override
    {
        _Note("StartEventWindowTimer", interval);
    }
    void StopEventWindowTimer(nxAlgoEventWindowObject*) override
    {
        calls.emplace_back("StopEventWindowTimer");
    }
    void OnEventWindow(nxAlgoEventWindowObject& window) override;
    nxAlgoDataSeriesObject* CreateDataSeries() override
    {
        return series.emplace_back(std::make_unique<nxAlgoDataSeriesObject>(this)).get();
    }
    nxAlgoLibraryObject* LoadLibrary(const std::string& name) override
    {
        _Note("LoadLibrary", name);
        return library;
    }
    void StopTimer(const std::string& name) override { _Note("StopTimer", name); }
    void Shutdown() override;
    const std::string& GetLogPrefix() const override { return logPrefix; }

    nxAlgoVorantJobCollectionObject* GetVorantJobs() override { return vorantJobs; }
    nxAlgoOrderObject* GetOrder(unsigned int id) override;
    nxAlgoOrderCollectionObject* GetOrders() override { return orders; }
    nxAlgoOrderCollectionObject* GetJobOrders() override { return jobOrders; }
    std::string GetError() override { return lastError; }
    // Only the store "old" exists, and creating gives a store: something not null, for the objects themselves
    // are not there yet.
    nxAlgoDataStoreObject* GetDataStore(const std::string& name, bool create) override;
    nxVorantParameter* GetParameter(const std::string& id) const override;
    bool SetParameter(const std::string& name, const std::string& value) override;
    std::string GetDynamicParameter(const std::string& tag, std::string name) override;
    void SendParameter(const std::string& tag, const std::string& name, const std::string& value) override
    {
        _Note("SendParameter", tag, name, value);
    }
    void PublishParameter(const std::string& n, const std::string& v) override
    {
        _Note("PublishParameter", n, v);
    }
    bool HasContext() override { return hasContext; }
    bool IsInOnInit() override { return inOnInit; }
    void SetReference(const std::string& text) override { _Note("SetReference", text); }
    std::string GetSelectedProduct() override { return "FDAX"; }
    unsigned int GetSelectedVolume() const override { return 4294967295; }
    double GetSelectedPrice() const override { return 100.25; }
    std::string GetSelectedSide() override { return "BUY"; }
    std::string GetSelectedSpreadSpec() override { return "1:2"; }
    void SetSelectedPrice(const double& price) override { _Note("SetSelectedPrice", price); }
    std::string GetAccount() override { return "ACC"; }
    unsigned int GetTransactionCount() override { return 7; }
    std::string GetTag() override { return "mine"; }
    void SetTag(const std::string& tag) override { _Note("SetTag", tag); }
    void SendUserState(const nxLogLevelEnum& level, const std::string& text) override
    {
        _Note("SendUserState", level.GetValue(), text);
    }
    void SendUserText1(const std::string& text) override { _Note("SendUserText1", text); }
    void SendUserText2(const std::string& text) override { _Note("SendUserText2", text); }
    void SendUserText3(const std::string& text) override { _Note("SendUserText3", text); }
    bool SendUserLog(const std::map<std::string, std::string>& fields, std::string& error) override;
    void SetOrderUserString(const std::string& text) override { _Note("SetOrderUserString", text); }
    void SetOrderUserString2(const std::string& text) override { _Note("SetOrderUserString2", text); }
    void SetShatterOnExit(bool on) override { _Note("SetShatterOnExit", on); }
    void SetEnableCrossProtection(bool on) override { _Note("SetEnableCrossProtection", on); }
    void SetDisableParentFills(bool on) override { _Note("SetDisableParentFills", on); }
    void SetDisableReport(bool on) override { _Note("SetDisableReport", on); }
    void SetEnablePandL(bool on) override { _Note("SetEnablePandL", on); }
    nxDecimal GetPandL(const nxCurrencyEnum& currency) override;
    bool SetChartLine(const std::string& chartID, const std::string& lineID, double value,
                      unsigned int colour) override;
    bool RemoveChartLine(const std::string& chartID, const std::string& lineID) override;

private:
    nxErrorEnum _Answer(const char* call);
    // Writes a call down as "operation(arguments)".
    template <class First, class... Rest>
    void _Note(const char* operation, const First& first, const Rest&... rest)
    {
        std::ostringstream text;
        text << std::boolalpha << operation << '(' << first;
        ((text << ',' << rest), ...);
        calls.push_back(text.str() + ")");
    }
};
