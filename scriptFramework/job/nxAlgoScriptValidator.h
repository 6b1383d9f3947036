#pragma once

#include <map>
#include <memory>
#include <string>

#include "scriptFramework/job/nxAlgoJobInterface.h"

class nxAlgoJobObject;

// A host without a market, for trying a script: does it compile, and does its OnInit run, as far as its first
// use of market data? Whatever stands here has a fixed answer that does nothing; a host derives from it and
// supplies the rest, or overrides more to carry a script further. For one thread.
//
// First CheckScript, then Run. Why they failed is told by the log, and by GetErrorText of the job.
class nxAlgoScriptValidator : public nxAlgoJobInterface
{
public:
    nxAlgoScriptValidator();
    // Copies share the job, which calls the first validator, and goes with whichever of them is destroyed
    // first: the others answer false from then on. Keep to one object.
    nxAlgoScriptValidator(const nxAlgoScriptValidator&) = default;
    nxAlgoScriptValidator& operator=(const nxAlgoScriptValidator&) = default;
    ~nxAlgoScriptValidator() override;

    // Loads the text and runs its main chunk, with the whole standard library. A second text is loaded into
    // the same Lua state, on top of the first.
    [[nodiscard]] bool CheckScript(const std::string& text);
    // Starts the job: OnInit, inside the sandbox. False too when nothing has been loaded.
    [[nodiscard]] bool Run();

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
    nxValueWrapper<unsigned int, -1, -2> GetID() override { return {}; }
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

protected:
    // The job, for its error text, memory limit and script helper; null once it has been deleted.
    nxAlgoJobObject* _GetJob() const { return _job->get(); }
    // Closes the script ahead of the destructor. A derived class calls it in its own: finalizers of a script
    // may call the host, which by the time of the base's destructor has lost its answers.
    void _DeleteJob();

private:
    // Held twice: the copies share the place, and one of them empties it for all.
    std::shared_ptr<std::unique_ptr<nxAlgoJobObject>> _job;
};
