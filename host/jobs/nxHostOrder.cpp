#include "host/jobs/nxHostOrder.h"

#include "host/exchange/nxOrderChecks.h"
#include "host/exchange/nxVenue.h"
#include "host/jobs/nxOrderServices.h"
#include "host/jobs/nxOutputServices.h"
#include "host/jobs/nxTimerServices.h"
#include "host/jobs/nxTradingJob.h"
#include "scriptFramework/orders/nxAlgoOrderParameters.h"

namespace {

nxOrderKind GetKindOf(const nxTradingJob& job, const nxHostProduct& product, const nxHostOrder::Texts& texts)
{
    nxOrderKind kind;
    kind.product = job.GetServices().orders->GetVenueProduct(product);
    kind.owner = job.GetIndex();
    kind.side = texts.side == nxGetText(nxSide::Buy) ? nxSide::Buy : nxSide::Sell;
    kind.isMarket = texts.type == "MARKET";
    static_cast<void>(nxSetFromText(texts.exec, kind.execution));
    static_cast<void>(nxSetFromText(texts.time, kind.duration));
    kind.crossProtected = job.IsCrossProtected();
    return kind;
}

// What a script may not ask for; empty when there is nothing of that.
std::string FindUnsupported(const nxAlgoOrderParameters& given)
{
    std::string refusal;
    const auto refuseGiven = [&](const char* key, const auto& field) {
        if (refusal.empty() && !field.IsNoChange())
            refusal = std::string(key) + " is not supported by the simulated exchange";
    };
    refuseGiven("stopVolume", given.GetStopVolume());
    refuseGiven("minVolume", given.GetMinVol());
    refuseGiven("payUpVolume", given.GetPayVol());
    refuseGiven("bracketStopLossVolume", given.GetBracketStopLossOrderVolumeThreshold());
    refuseGiven("finesseTicks", given.GetFinesseTicks());
    refuseGiven("finesseVolume", given.GetFinesseVolume());
    refuseGiven("finessePaperOnly", given.GetFinessePaperOnly());
    // Nothing can be taken off an order, but for its volume.
    const auto refuseNull = [&](const char* key, const auto& field) {
        if (refusal.empty() && field.IsNull())
            refusal = std::string(key) + " has no value; leave it out to leave it as it is";
    };
    refuseNull("volume", given.GetVolume());
    refuseNull("price", given.GetPrice());
    refuseNull("stopPrice", given.GetStopPrice());
    refuseNull("expiryDate", given.GetExpiryDate());
    refuseNull("icebergMinPeakSize", given.GetIcebergMinPeakSize());
    refuseNull("icebergMaxPeakSize", given.GetIcebergMaxPeakSize());
    refuseNull("icebergThreshold", given.GetIcebergThreshold());
    refuseNull("bracketProfit", given.GetBracketProfitTicks());
    refuseNull("bracketStopLoss", given.GetBracketStopLossTicks());
    refuseNull("bracketStopLossLimit", given.GetBracketStopLossOrderTicksFromTrigger());
    return refusal;
}

nxOrderTerms GetTermsOf(const nxAlgoOrderParameters& given)
{
    nxOrderTerms terms;
    terms.volume = given.GetVolume();
    terms.price = given.GetPrice();
    terms.stopPrice = given.GetStopPrice();
    terms.icebergMinPeak = given.GetIcebergMinPeakSize();
    terms.icebergMaxPeak = given.GetIcebergMaxPeakSize();
    terms.icebergThreshold = given.GetIcebergThreshold();
    terms.bracketProfit = given.GetBracketProfitTicks();
    terms.bracketStopLoss = given.GetBracketStopLossTicks();
    terms.bracketStopLimit = given.GetBracketStopLossOrderTicksFromTrigger();
    terms.expiry = given.GetExpiryDate();
    if (!given.GetBracketStopLossOrderType().IsNoChange())
        terms.bracketStopIsLimit = given.GetBracketStopLossOrderType() == nxOrderType_Limit;
    if (!given.GetBracketStopLossOrderExecutionRestriction().IsNoChange())
        terms.bracketStopTrails =
            given.GetBracketStopLossOrderExecutionRestriction() == nxExecutionRestriction_TrailingStop;
    return terms;
}

}  // namespace

// What a million orders that are over weigh.
static_assert(sizeof(nxHostOrder) <= 192);

nxHostOrder::nxHostOrder(nxTradingJob& job, nxHostProduct& product, const Texts& texts, unsigned int id)
    : nxHostOrder(job, product, nxOrderTicket(GetKindOf(job, product, texts), id))
{
    _ticket.SetSpread(texts.spreadSpec, {});
}

nxHostOrder::nxHostOrder(nxTradingJob& job, nxHostProduct& product, nxOrderTicket ticket)
    : nxShownOrder(&job, &product), _ticket(std::move(ticket))
{
    SetSide(nxGetText(_ticket.GetSide()));
}

nxTradingJob& nxHostOrder::GetOwner() const
{
    return static_cast<nxTradingJob&>(*GetJob());  // who makes every order of the host
}

nxHostProduct& nxHostOrder::GetHostProduct() const
{
    return static_cast<nxHostProduct&>(*_GetProduct());
}

std::string nxHostOrder::_GetAccount()
{
    return GetOwner().GetAccount();
}

void nxHostOrder::SetSpreadInstance(const std::string& text)
{
    _ticket.SetSpread(_ticket.GetSpread().legs.Get(), text);
}

bool nxHostOrder::_WorkOrder(const nxAlgoOrderParameters& parameters)
{
    const nxHostServices& services = GetOwner().GetServices();
    if (const char* end = _ticket.FindEnd()) return _Refuse(end);
    if (!services.orders->MayTrade(GetOwner())) return _Refuse("the job has ended");
    if (const std::string refusal = FindUnsupported(parameters); !refusal.empty()) return _Refuse(refusal);
    const nxOrderTerms changes = GetTermsOf(parameters);
    const nxOrderTerms wanted = _ticket.GetWanted(changes);
    if (const char* fault = nxOrderChecks::FindFault(_ticket.GetKind(), wanted)) return _Refuse(fault);
    nxVenue& venue = *services.orders->GetVenue();
    const long long now = services.timers->GetTime();
    if (_ticket.IsSent()) {
        _Record("amend", changes);
        _ticket.Amend(changes);
        venue.Amend(GetID(), changes, now);
    } else {
        _Record("new", wanted);
        _ticket.Send(wanted);
        venue.Submit(GetID(), _ticket.GetKind(), wanted, now);
    }
    GetOwner().NoteRequest(*this);
    return true;
}

void nxHostOrder::Close(unsigned int volume, bool atOnce)
{
    const nxHostServices& services = GetOwner().GetServices();
    nxVenue& venue = *services.orders->GetVenue();
    const long long now = services.timers->GetTime();
    nxOrderTerms terms;
    terms.volume = volume;
    _ticket.Send(terms);
    _Record("flatten", terms);
    if (atOnce) {
        nxOrderKind kind = _ticket.GetKind();
        kind.crossProtected = true;
        venue.TakeAtOnce(GetID(), kind, terms, now);
    } else {
        venue.Submit(GetID(), _ticket.GetKind(), terms, now);
    }
    GetOwner().NoteRequest(*this);
}

bool nxHostOrder::_PullOrder(const nxVolume&)
{
    const char* const fault = Pull();
    return fault == nullptr || _Refuse(fault);
}

const char* nxHostOrder::Pull()
{
    if (const char* end = _ticket.FindEnd()) return end;
    if (!_ticket.IsSent()) return "the order was never worked";
    _Record("pull", nxOrderTerms::MakeNoChange());
    _ticket.Pull();
    const nxHostServices& services = GetOwner().GetServices();
    services.orders->GetVenue()->Cancel(GetID(), services.timers->GetTime());
    GetOwner().NoteRequest(*this);
    return nullptr;
}

void nxHostOrder::Apply(const nxExchangeEvent& event)
{
    const bool isOver = _ticket.Apply(event);
    if (_ticket.IsLastFill()) _SetLastFill(event.fillPrice, event.fillVolume);
    nxTradingJob& job = GetOwner();
    job.GetShownRecord().Forget(*this);
    if (_update != nullptr) _update->Renew();
    if (job.GetServices().output->IsRecording()) _RecordEvent(event);
    if (isOver) job.GetServices().orders->GetVenue()->Release(GetID());
}

nxAlgoOrderUpdateObject& nxHostOrder::GetUpdate()
{
    if (_update == nullptr) {
        _update = &GetOwner().MakeUpdate(*this);
        _update->Renew();
    }
    return *_update;
}

// Scripts read the order's own names, so the record needs none.
const nxOrderTransaction* nxHostOrder::_GetLastTransaction() const
{
    ShownRecord& shown = GetOwner().GetShownRecord();
    if (shown.order == this) return &shown.transaction;
    const bool isFill = _ticket.IsLastFill();
    shown.order = this;
    shown.transaction.SetOrder(_ticket.MakeRecord());
    shown.transaction.SetFillPrice(isFill ? _GetLastFillPrice() : nxDecimal());
    shown.transaction.SetFillVolume(isFill ? _GetLastFillVolume() : nxVolume());
    shown.transaction.SetError(_ticket.GetLastError());
    return &shown.transaction;
}

void nxHostOrder::_GetLastTimes(nxTimeStamp& update, nxDateTime& fill) const
{
    update = nxTimeStamp::FromNanoseconds(_ticket.GetLastUpdateTime());
    fill = _ticket.IsLastFill() ? nxTimeStamp::FromNanoseconds(_ticket.GetLastFillTime()).GetAsDateTime()
                                : nxDateTime();
}
