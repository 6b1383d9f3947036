#pragma once

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/jobs/nxQuietJobInterface.h"
#include "scriptFramework/market/nxAlgoProductObject.h"

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

private:
    nxErrorEnum _Answer(const char* call);
};
