#pragma once

#include <map>
#include <string>

#include "scriptFramework/job/nxAlgoJobInterface.h"

// A host that knows nothing and does nothing, in part: what stands here has a fixed answer, under which a
// script without a market runs on. The rest is left to whoever derives from it; nxQuietAnswers supplies that,
// too.
class nxPartialJobInterface : public nxAlgoJobInterface
{
public:
    nxAlgoOrderCollectionObject* GetOrders() override { return nullptr; }
    nxAlgoProductObject* GetProduct(const std::string&) override { return nullptr; }
    nxErrorEnum SubscribePrices(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum UnsubscribePrices(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum SubscribePositions(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum UnsubscribePositions(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum SubscribePAndL(nxAlgoProductObject*) override { return {}; }
    nxErrorEnum UnsubscribePAndL(nxAlgoProductObject*) override { return {}; }
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
    void LogText(const std::string&) override {}
    void PublishParameter(const std::string&, const std::string&) override {}
    void StartTimer(const std::string&, unsigned int) override {}
    void StopTimer(const std::string&) override {}
    void SetTag(const std::string&) override {}
    void Shutdown() override {}
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
    nxAlgoOrderObject* GetOrder(unsigned int) override { return nullptr; }
    void StartEventWindowTimer(nxAlgoEventWindowObject*, double) override {}
    void StopEventWindowTimer(nxAlgoEventWindowObject*) override {}
    void OnPrice(unsigned int, const nxPrice&, const nxPrice&) override {}
    void OnMarketDepth(unsigned int, const nxMarketDepth&, const nxMarketDepth&) override {}
    void OnEventWindow(nxAlgoEventWindowObject&) override {}
    bool _Reserved14() override { return false; }
    const std::string& GetLogPrefix() const override { return nxAlgoJobInterface::GetLogPrefix(); }
    nxSyntheticChildOrderTypeEnum GetSyntheticChildOrderType() override { return {}; }
    void SetError(const std::string&) override {}
    std::string GetError() override { return {}; }
    void OnPositionUpdate(unsigned int, const nxAlgoPosition&) override {}
    void OnOrderUpdate(const nxAlgoOrderObject&, const nxOrderTransaction&) override {}
    void OnOrderFill(const nxAlgoOrderObject&, const nxOrderTransaction&) override {}
    double _Reserved16() override { return 1.0; }
    void _Reserved26() override {}
    void _Reserved27() override {}
    void _Reserved28() override {}
};
