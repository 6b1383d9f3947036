#pragma once

#include "host/jobs/nxOrderTicket.h"
#include "scriptFramework/orders/nxAlgoOrderObject.h"

// An order's ticket as a script reads it. Used on the run's thread.
class nxShownOrder : public nxAlgoOrderObject
{
public:
    using nxAlgoOrderObject::nxAlgoOrderObject;

    virtual const nxOrderTicket& GetTicket() const = 0;

    unsigned int GetID() const override { return GetTicket().GetID(); }
    nxDecimal GetPrice() override { return GetTicket().GetPrice(); }
    unsigned int GetVolume() override { return GetTicket().GetVolume(); }
    unsigned int GetWorking() override { return GetTicket().GetWorking(); }
    unsigned int GetExecuted() override { return GetTicket().GetExecuted(); }
    std::string GetType() override { return nxGetTypeText(GetTicket().IsMarket()); }
    std::string GetExec() override { return nxGetText(GetTicket().GetExecution()); }
    std::string GetTime() override { return nxGetText(GetTicket().GetDuration()); }
    std::string GetSpreadSpec() override { return GetTicket().GetSpread().legs.Get(); }
    nxDecimal GetStopPrice() override { return GetTicket().GetStopPrice(); }
    nxVolume GetIcebergMinPeakSize() override { return GetTicket().GetIceberg().minPeak; }
    nxVolume GetIcebergMaxPeakSize() override { return GetTicket().GetIceberg().maxPeak; }
    nxVolume GetIcebergThreshold() override { return GetTicket().GetIceberg().threshold; }
    nxVolume GetBracketProfit() override { return GetTicket().GetBracket().profit; }
    nxVolume GetBracketStopLoss() override { return GetTicket().GetBracket().stopLoss; }
    std::string GetBracketStopLossType() override;
    nxVolume GetBracketStopLossLimit() override { return GetTicket().GetBracket().stopLimit; }
    bool GetBracketStopLossTrailing() override { return GetTicket().GetBracket().stopTrails; }
    nxDecimal GetAveragePrice() override { return GetTicket().GetAveragePrice(); }
    // The volume in front of it at its price as the market shows it now; 4294967295 where that is not shown.
    // 0 for an order that does not rest.
    unsigned int GetOrderQPos() override;

protected:
    void _GetOrderStatus(nxOrderStatusEnum& status) override { status = GetTicket().GetStatus(); }
    bool _IsPendingAmend() const override { return GetTicket().IsAmendPending(); }
    bool _IsPendingCancel() const override { return GetTicket().IsCancelPending(); }
    nxAlgoOrderObject* _GetParent() override;
    void _SetLastExchangeFillTime(nxAlgoTimeStamp& time) override;
    void _SetLastVorantUpdateTime(nxAlgoTimeStamp& time) override;

    // The reason that the script is told for what is not done; false.
    bool _Refuse(const std::string& reason);
};
