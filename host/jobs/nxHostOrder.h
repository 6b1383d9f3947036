#pragma once

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "base/records/nxOrderTransaction.h"
#include "base/values/nxExactAmount.h"
#include "base/values/nxSharedText.h"
#include "host/exchange/nxSimulatedExchange.h"
#include "scriptFramework/orders/nxAlgoOrderObject.h"
#include "scriptFramework/orders/nxAlgoOrderUpdateObject.h"

class nxTradingJob;
class nxHostProduct;

// An order of the reference host as one script sees it: what was asked of the exchange, and what its answers
// have told so far, which with latency is behind the exchange. Owned by the job whose script sees it; another
// job that looks at the same order has one of its own over it, through which it can change nothing. Used on
// the replay's thread.
//
// An order has its number from the beginning, and is nothing the exchange knows of until it is first worked.
// A script may keep one to the end of the run, and a run may make millions, so an order that is over keeps
// what can still be asked, in few bytes; what only a living one needs is freed with its end.
class nxHostOrder : public nxAlgoOrderObject
{
public:
    // In createOrder's vocabulary.
    struct Texts
    {
        const std::string &side, &type, &exec, &time, &spreadSpec;
    };

    // The record of the order whose update a script read last: one for each job, since records are large and
    // updates are kept for life.
    struct ShownRecord
    {
        const nxHostOrder* order = nullptr;
        nxOrderTransaction transaction;

        void Forget(const nxHostOrder& changed)
        {
            if (order == &changed) order = nullptr;
        }
    };

    nxHostOrder(nxTradingJob& job, nxHostProduct& product, const Texts& texts, unsigned int id);
    // A bracket's child, of which the exchange told: it is sent already.
    nxHostOrder(nxTradingJob& job, nxHostProduct& product, const nxExchangeOrder& child, nxHostOrder& parent);
    // Another job's order, to look at.
    nxHostOrder(nxTradingJob& viewer, nxHostProduct& product, const nxHostOrder& original);
    ~nxHostOrder() override;

    nxTradingJob& GetOwner() const { return _Get()._GetViewer(); }
    nxHostProduct& GetHostProduct() const;
    nxSide GetOrderSide() const { return _Get()._orderSide; }
    bool IsSent() const { return _Get()._isSent; }
    // Sent, and not known to be over.
    bool IsOpen() const;
    // What a view does not share: the script's label and the last fill.
    void Refresh(const nxHostOrder& original);

    // Takes over what the exchange tells.
    void Apply(const nxExchangeEvent& event);
    // Of the event that was applied last. It stays where it is and shows the newest event.
    nxAlgoOrderUpdateObject& GetUpdate();
    // Sends an order that closes a position, of that volume. atOnce: at the end of a run, to take what is
    // shown then.
    void Close(unsigned int volume, bool atOnce);
    // Asks for the rest to be taken out of the market; null, or why that cannot be.
    const char* Pull();

    unsigned int GetID() const override { return _Get()._id; }
    nxDecimal GetPrice() override { return _Get()._price; }
    unsigned int GetVolume() override { return _Get()._volume; }
    unsigned int GetWorking() override;
    unsigned int GetExecuted() override { return _Get()._executed; }
    std::string GetType() override { return nxGetTypeText(_Get()._isMarket); }
    std::string GetExec() override { return nxGetText(_Get()._execution); }
    std::string GetTime() override { return nxGetText(_Get()._duration); }
    std::string GetSpreadSpec() override { return _GetRare().spreadSpec.Get(); }
    // Before it is first worked.
    void SetSpreadInstance(const std::string& text);
    nxDecimal GetStopPrice() override { return _GetRare().stopPrice; }
    nxVolume GetIcebergMinPeakSize() override { return _GetRare().icebergMinPeak; }
    nxVolume GetIcebergMaxPeakSize() override { return _GetRare().icebergMaxPeak; }
    nxVolume GetIcebergThreshold() override { return _GetRare().icebergThreshold; }
    nxVolume GetBracketProfit() override { return _GetRare().bracketProfit; }
    nxVolume GetBracketStopLoss() override { return _GetRare().bracketStopLoss; }
    std::string GetBracketStopLossType() override;
    nxVolume GetBracketStopLossLimit() override { return _GetRare().bracketStopLimit; }
    bool GetBracketStopLossTrailing() override { return _GetRare().bracketStopTrails; }
    // Null until there was a fill.
    nxDecimal GetAveragePrice() override { return _Get()._averagePrice; }
    bool IsCurrentJob() override;
    // The volume in front of it at its price as the market shows it now; 4294967295 where that is not shown.
    // 0 for an order that does not rest.
    unsigned int GetOrderQPos() override;

protected:
    bool _WorkOrder(const nxAlgoOrderParameters& parameters) override;
    bool _PullOrder(const nxVolume& algoID) override;
    void _GetOrderStatus(nxOrderStatusEnum& status) override { status = _GetStatus(); }
    bool _IsPendingAmend() const override;
    bool _IsPendingCancel() const override;
    nxAlgoOrderObject* _GetParent() override;
    std::string _GetAccount() override;
    void _SetLastExchangeFillTime(nxAlgoTimeStamp& time) override;
    void _SetLastVorantUpdateTime(nxAlgoTimeStamp& time) override;
    const nxOrderTransaction* _GetLastTransaction() const override;

private:
    // What an order needs as long as something can become of it.
    struct Live
    {
        nxOrderKind kind;
        nxOrderTerms terms;                // as known to hold, or, before the answer, as first sent
        std::vector<nxOrderTerms> amends;  // on their way
        bool isCancelPending = false;
        bool isPullUnanswered = false;  // also once something else has ended the order
        nxExactAmount filled;           // prices times volumes
    };
    // What most orders do not have.
    struct Rare
    {
        const nxHostOrder* original = nullptr;  // of a view
        unsigned int parent = 0;                // number; 0: none
        bool bracketStopIsLimit = false;
        bool bracketStopTrails = false;
        nxVolume icebergMinPeak, icebergMaxPeak, icebergThreshold;
        nxVolume bracketProfit, bracketStopLoss, bracketStopLimit;
        nxDecimal stopPrice;
        nxSharedText spreadSpec, spreadInstance;  // of a strategy; kept for those who read them
    };

    static constexpr long long NoTime = std::numeric_limits<long long>::min();

    nxHostOrder(nxTradingJob& job, nxHostProduct& product, const nxOrderKind& kind, unsigned int id);
    // The order itself, of a view as well.
    const nxHostOrder& _Get() const { return _rare && _rare->original ? *_rare->original : *this; }
    const Rare& _GetRare() const;
    Rare& _MakeRare();
    nxTradingJob& _GetViewer() const;
    nxOrderStatusEnum _GetStatus() const { return nxOrderStatusEnum(_Get()._status); }
    void _SetTerms(const nxOrderTerms& terms);
    void _AddFill(const nxExchangeEvent& event);
    // Why nothing can be asked of the order any more; null when it can.
    const char* _FindEnd() const;
    bool _Refuse(const std::string& text);
    void _Record(const char* request, const nxOrderTerms& terms);
    void _RecordEvent(const nxExchangeEvent& event);
    void _ShowUpdate();

    std::unique_ptr<Live> _live;  // null once it is over, and of a view
    std::unique_ptr<Rare> _rare;
    std::unique_ptr<nxAlgoOrderUpdateObject> _update;  // made for the first event that a script is told of
    nxDecimal _price;
    nxDecimal _averagePrice;
    long long _lastFillTime = NoTime;
    long long _lastUpdateTime = NoTime;
    unsigned int _id = 0;
    unsigned int _volume = 0;
    unsigned int _executed = 0;
    unsigned int _lastError = 0;  // of the latest event, and so is the next
    bool _lastIsFill = false;
    bool _isSent = false;
    bool _isMarket = false;
    nxSide _orderSide = nxSide::Buy;
    nxOrderExecution _execution = nxOrderExecution::None;
    nxOrderDuration _duration = nxOrderDuration::Day;
    unsigned short _status = nxOrderStatus_Pending;
};
