// What the run's record tells of an order: requests, and the events that answer them.
#include <algorithm>
#include <limits>

#include "host/jobs/nxHostOrder.h"
#include "host/jobs/nxHostServices.h"
#include "host/jobs/nxOutputServices.h"
#include "host/jobs/nxTradingJob.h"

namespace {

nxRunRecord::Field Number(const char* name, const nxDecimal& number)
{
    return {name, number.GetAsDouble()};  // not a number for a mark, which the record shows as null
}

nxRunRecord::Field Number(const char* name, const nxVolume& number)
{
    return {name, number.IsValid() ? static_cast<double>(number.GetValue())
                                   : std::numeric_limits<double>::quiet_NaN()};
}

constexpr struct
{
    nxExchangeEvent::Kind kind;
    const char* name;
} EventNames[] = {
    {nxExchangeEvent::Kind::Accepted, "accepted"},
    {nxExchangeEvent::Kind::ChildCreated, "childCreated"},
    {nxExchangeEvent::Kind::Triggered, "triggered"},
    {nxExchangeEvent::Kind::Filled, "filled"},
    {nxExchangeEvent::Kind::Amended, "amended"},
    {nxExchangeEvent::Kind::Cancelled, "cancelled"},
    {nxExchangeEvent::Kind::Rejected, "rejected"},
    {nxExchangeEvent::Kind::AmendRejected, "amendRejected"},
    {nxExchangeEvent::Kind::CancelRejected, "cancelRejected"},
    {nxExchangeEvent::Kind::QueueMoved, "queueMoved"},
};

}  // namespace

void nxHostOrder::_Record(const char* request, const nxOrderTerms& terms) const
{
    const nxTradingJob& job = GetOwner();
    if (!job.GetServices().output->IsRecording()) return;
    const std::string expiry = terms.expiry.IsValid() ? terms.expiry.GetAsString() : std::string();
    job.Record("order", {{"request", request},
                         {"order", GetID()},
                         {"product", GetHostProduct().GetMarket().GetName()},
                         {"side", nxGetText(_ticket.GetSide())},
                         {"orderType", nxGetTypeText(_ticket.IsMarket())},
                         {"exec", nxGetText(_ticket.GetExecution())},
                         {"timeInForce", nxGetText(_ticket.GetDuration())},
                         {"spreadSpec", _ticket.GetSpread().legs.Get()},
                         {"spreadInstance", _ticket.GetSpread().instance.Get()},
                         Number("volume", terms.volume),
                         Number("price", terms.price),
                         Number("stopPrice", terms.stopPrice),
                         Number("icebergMinPeakSize", terms.icebergMinPeak),
                         Number("icebergMaxPeakSize", terms.icebergMaxPeak),
                         Number("icebergThreshold", terms.icebergThreshold),
                         Number("bracketProfit", terms.bracketProfit),
                         Number("bracketStopLoss", terms.bracketStopLoss),
                         Number("bracketStopLossLimit", terms.bracketStopLimit),
                         {"expiryDate", expiry},
                         {"reference", GetReference()},
                         {"userString", job.GetOrderUserString()},
                         {"userString2", job.GetOrderUserString2()}});
}

void nxHostOrder::_RecordEvent(const nxExchangeEvent& event) const
{
    const auto kind = std::ranges::find(EventNames, event.kind, [](const auto& row) { return row.kind; });
    const bool isFill = event.kind == nxExchangeEvent::Kind::Filled;
    const std::string exchangeTime = nxTimeStamp::FromNanoseconds(event.time).GetAsString();
    const nxProductAccount& account = GetHostProduct().GetAccount();
    const nxDecimal fee = account.GetLastFee().GetAsDecimal();
    GetOwner().Record("orderEvent",
                      {{"event", kind->name},
                       {"order", event.order},
                       {"parent", _ticket.GetParent()},
                       {"product", GetHostProduct().GetMarket().GetName()},
                       {"side", nxGetText(_ticket.GetSide())},
                       {"exchangeTime", exchangeTime},
                       {"status", event.status.GetAsString()},
                       Number("price", event.price),
                       Number("stopPrice", event.stopPrice),
                       {"volume", event.volume},
                       {"executed", event.executed},
                       Number("ahead", event.ahead),
                       Number("fillPrice", event.fillPrice),
                       Number("fillVolume", isFill ? nxVolume(event.fillVolume) : nxVolume()),
                       {"maker", event.isMaker},
                       Number("fee", isFill ? fee : nxDecimal()),
                       Number("pointValue", isFill ? account.GetPointValue() : nxDecimal()),
                       {"cause", isFill ? nxGetName(event.cause) : ""},
                       {"error", event.error.IsSuccess() ? std::string_view() : event.error.GetAsString()},
                       {"reason", event.reason}});
}
