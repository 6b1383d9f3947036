#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/records/nxOrderTransaction.h"
#include "base/values/nxExactAmount.h"
#include "host/exchange/nxSimulatedExchange.h"
#include "scriptFramework/orders/nxAlgoOrderObject.h"
#include "scriptFramework/orders/nxAlgoOrderUpdateObject.h"

class nxHostJob;
class nxHostProduct;

// An order of the reference host as one script sees it: what was asked of the exchange, and what its answers
// have told so far, which with latency is behind the exchange. Owned by the job whose script sees it; another
// job that looks at the same order has one of its own over the same state, through which it can change
// nothing. Used on the replay's thread.
//
// An order has its number from the beginning, and is nothing the exchange knows of until it is first worked.
class nxHostOrder : public nxAlgoOrderObject
{
public:
    // In createOrder's vocabulary.
    struct Texts
    {
        const std::string &side, &type, &exec, &time, &spreadSpec;
    };

    nxHostOrder(nxHostJob& job, nxHostProduct& product, const Texts& texts, unsigned int id);
    // A bracket's child, of which the exchange told: it is sent already.
    nxHostOrder(nxHostJob& job, nxHostProduct& product, const nxExchangeOrder& child, nxHostOrder& parent);
    // Another job's order, to look at.
    nxHostOrder(nxHostJob& viewer, nxHostProduct& product, const nxHostOrder& original);

    nxHostJob& GetOwner() const { return *_state->owner; }
    nxHostProduct& GetHostProduct() const { return _hostProduct; }
    const nxOrderKind& GetKind() const { return _state->kind; }
    bool IsSent() const { return _state->isSent; }
    // Sent, and not known to be over.
    bool IsOpen() const;
    // What a view does not share: the script's label and the last fill.
    void Refresh(const nxHostOrder& original);

    // Takes over what the exchange tells.
    void Apply(const nxExchangeEvent& event);
    // Of the event that was applied last. It stays where it is and shows the newest event.
    nxAlgoOrderUpdateObject& GetUpdate(const nxExchangeEvent& event);
    // Sends an order that closes a position, of that volume. atOnce: at the end of a run, to take what is
    // shown then.
    void Close(unsigned int volume, bool atOnce);
    // Asks for the rest to be taken out of the market; null, or why that cannot be.
    const char* Pull();

    unsigned int GetID() const override { return _state->id; }
    nxDecimal GetPrice() override { return _state->terms.price; }
    unsigned int GetVolume() override { return nxOrderTerms::GetOr(_state->terms.volume, 0); }
    unsigned int GetWorking() override;
    unsigned int GetExecuted() override { return _state->executed; }
    std::string GetType() override { return nxGetTypeText(_state->kind); }
    std::string GetExec() override { return nxGetText(_state->kind.execution); }
    std::string GetTime() override { return nxGetText(_state->kind.duration); }
    std::string GetSpreadSpec() override { return _state->spreadSpec; }
    // Before it is first worked.
    void SetSpreadInstance(const std::string& text) { _state->spreadInstance = text; }
    nxDecimal GetStopPrice() override { return _state->terms.stopPrice; }
    nxVolume GetIcebergMinPeakSize() override { return _state->terms.icebergMinPeak; }
    nxVolume GetIcebergMaxPeakSize() override { return _state->terms.icebergMaxPeak; }
    nxVolume GetIcebergThreshold() override { return _state->terms.icebergThreshold; }
    nxVolume GetBracketProfit() override { return _state->terms.bracketProfit; }
    nxVolume GetBracketStopLoss() override { return _state->terms.bracketStopLoss; }
    std::string GetBracketStopLossType() override;
    nxVolume GetBracketStopLossLimit() override { return _state->terms.bracketStopLimit; }
    bool GetBracketStopLossTrailing() override { return _state->terms.bracketStopTrails.value_or(false); }
    // Null until there was a fill.
    nxDecimal GetAveragePrice() override;
    bool IsCurrentJob() override;
    // The volume in front of it at its price as the market shows it now; 4294967295 where that is not shown.
    // 0 for an order that does not rest.
    unsigned int GetOrderQPos() override;

protected:
    bool _WorkOrder(const nxAlgoOrderParameters& parameters) override;
    bool _PullOrder(const nxVolume& algoID) override;
    void _GetOrderStatus(nxOrderStatusEnum& status) override { status = _state->status; }
    bool _IsPendingAmend() const override { return !_state->amends.empty(); }
    bool _IsPendingCancel() const override { return _state->isCancelPending; }
    nxAlgoOrderObject* _GetParent() override;
    std::string _GetAccount() override;
    void _SetLastExchangeFillTime(nxAlgoTimeStamp& time) override;
    void _SetLastVorantUpdateTime(nxAlgoTimeStamp& time) override;

private:
    struct State
    {
        unsigned int id = 0;
        nxHostJob* owner = nullptr;
        unsigned int parent = 0;  // number; 0: none
        nxOrderKind kind;
        std::string spreadSpec, spreadInstance;  // of a strategy; kept for those who read them
        nxOrderTerms terms;                      // as known to hold, or, before the answer, as first sent
        std::vector<nxOrderTerms> amends;        // on their way
        nxOrderStatusEnum status{nxOrderStatus_Pending};
        bool isSent = false;
        bool isCancelPending = false;
        bool isPullUnanswered = false;  // also once something else has ended the order
        unsigned int executed = 0;
        nxExactAmount filled;  // prices times volumes
        nxDecimal lastFillPrice;
        unsigned int lastFillVolume = 0;
        std::optional<long long> lastFillTime, lastUpdateTime;
    };

    // What a script is shown of events; made for the first one that it is told of.
    struct Update
    {
        nxOrderTransaction transaction;
        std::optional<nxAlgoOrderUpdateObject> object;
    };

    nxHostOrder(nxHostJob& job, nxHostProduct& product, const nxOrderKind& kind, unsigned int id);
    // Why nothing can be asked of the order any more; null when it can.
    const char* _FindEnd() const;
    bool _Refuse(const std::string& text);
    void _Record(const char* request, const nxOrderTerms& terms);
    void _RecordEvent(const nxExchangeEvent& event);
    void _MakeUpdate(const nxExchangeEvent& event);

    nxHostJob& _job;
    nxHostProduct& _hostProduct;
    std::shared_ptr<State> _state;
    std::unique_ptr<Update> _update;
};
