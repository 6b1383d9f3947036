#include "host/jobs/nxHostOrder.h"

#include <algorithm>
#include <limits>

#include "host/jobs/nxHostJob.h"
#include "host/jobs/nxOrderServices.h"
#include "host/jobs/nxOutputServices.h"
#include "host/jobs/nxTimerServices.h"
#include "scriptFramework/orders/nxAlgoOrderParameters.h"

namespace {

nxOrderKind GetKindOf(const nxHostOrder::Texts& texts)
{
    nxOrderKind kind;
    kind.side = texts.side == nxGetText(nxSide::Buy) ? nxSide::Buy : nxSide::Sell;
    kind.isMarket = texts.type == "MARKET";
    static_cast<void>(nxSetFromText(texts.exec, kind.execution));
    static_cast<void>(nxSetFromText(texts.time, kind.duration));
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

constexpr struct
{
    nxFillCause cause;
    const char* name;
} CauseNames[] = {
    {nxFillCause::Took, "took"},         {nxFillCause::Touched, "touched"},
    {nxFillCause::Queue, "queue"},       {nxFillCause::TradedThrough, "tradedThrough"},
    {nxFillCause::Crossed, "crossed"},   {nxFillCause::Bar, "bar"},
    {nxFillCause::OwnOrder, "ownOrder"},
};

}  // namespace

nxHostOrder::nxHostOrder(nxHostJob& job, nxHostProduct& product, const nxOrderKind& kind, unsigned int id)
    : nxAlgoOrderObject(&job, &product), _job(job), _hostProduct(product), _state(std::make_shared<State>())
{
    _state->id = id;
    _state->owner = &job;
    _state->kind = kind;
    SetSide(nxGetText(kind.side));
}

nxHostOrder::nxHostOrder(nxHostJob& job, nxHostProduct& product, const Texts& texts, unsigned int id)
    : nxHostOrder(job, product, GetKindOf(texts), id)
{
    _state->spreadSpec = texts.spreadSpec;
    _state->kind.product = job.GetServices().orders->GetVenueProduct(product);
    _state->kind.owner = job.GetIndex();
    _state->kind.crossProtected = job.IsCrossProtected();
}

nxHostOrder::nxHostOrder(nxHostJob& job, nxHostProduct& product, const nxExchangeOrder& child,
                         nxHostOrder& parent)
    : nxHostOrder(job, product, child.kind, child.id)
{
    _state->parent = parent.GetID();
    _state->spreadSpec = parent._state->spreadSpec;
    _state->spreadInstance = parent._state->spreadInstance;
    _state->terms = child.terms;
    _state->isSent = true;
}

nxHostOrder::nxHostOrder(nxHostJob& viewer, nxHostProduct& product, const nxHostOrder& original)
    : nxAlgoOrderObject(&viewer, &product), _job(viewer), _hostProduct(product), _state(original._state)
{
    SetSide(original.GetSide());
}

void nxHostOrder::Refresh(const nxHostOrder& original)
{
    SetReference(original.GetReference());
    if (_state->lastFillVolume != 0) _SetLastFill(_state->lastFillPrice, _state->lastFillVolume);
}

bool nxHostOrder::IsOpen() const
{
    return _state->isSent && (_state->status == nxOrderStatus_Pending || _state->status.IsWorkingOrder());
}

bool nxHostOrder::IsCurrentJob()
{
    return &_job == _state->owner;
}

unsigned int nxHostOrder::GetWorking()
{
    return _state->status.IsWorkingOrder() ? GetVolume() - _state->executed : 0;
}

std::string nxHostOrder::GetBracketStopLossType()
{
    if (!_state->terms.bracketStopLoss.IsValid()) return {};
    return _state->terms.bracketStopIsLimit.value_or(false) ? "LIMIT" : "MARKET";
}

nxDecimal nxHostOrder::GetAveragePrice()
{
    constexpr unsigned char places = 10;
    if (_state->executed == 0) return {};
    nxDecimal average = _state->filled.GetShare(1, _state->executed, places).GetAsDecimal(places);
    average.Normalise(0);
    return average;
}

unsigned int nxHostOrder::GetOrderQPos()
{
    const nxExchangeOrder* const order = _job.GetServices().orders->GetVenue()->FindOrder(_state->id);
    return order != nullptr && order->isResting && !order->kind.isMarket ? order->ahead.GetValue() : 0;
}

nxAlgoOrderObject* nxHostOrder::_GetParent()
{
    return _state->parent == 0 ? nullptr : _job.GetOrder(_state->parent);
}

std::string nxHostOrder::_GetAccount()
{
    return _state->owner->GetOptions().account;
}

void nxHostOrder::_SetLastExchangeFillTime(nxAlgoTimeStamp& time)
{
    if (_state->lastFillTime) time.SetTimeStamp(nxTimeStamp::FromNanoseconds(*_state->lastFillTime));
}

void nxHostOrder::_SetLastVorantUpdateTime(nxAlgoTimeStamp& time)
{
    if (_state->lastUpdateTime) time.SetTimeStamp(nxTimeStamp::FromNanoseconds(*_state->lastUpdateTime));
}

bool nxHostOrder::_Refuse(const std::string& text)
{
    _job.SetError(text);
    return false;
}

const char* nxHostOrder::_FindEnd() const
{
    if (!IsOpen() && _state->isSent)
        return _state->status == nxOrderStatus_Filled ? "the order is filled"
                                                      : "the order is no longer working";
    if (_state->isCancelPending) return "the order is being pulled";
    if (&_job != _state->owner) return "the order is another job's";
    return nullptr;
}

bool nxHostOrder::_WorkOrder(const nxAlgoOrderParameters& parameters)
{
    if (const char* end = _FindEnd()) return _Refuse(end);
    if (!_job.GetServices().orders->MayTrade(_job)) return _Refuse("the job has ended");
    if (const std::string refusal = FindUnsupported(parameters); !refusal.empty()) return _Refuse(refusal);
    const nxOrderTerms changes = GetTermsOf(parameters);
    nxOrderTerms wanted = _state->terms;
    for (const nxOrderTerms& amend : _state->amends)
        wanted.Merge(amend);
    wanted.Merge(changes);
    if (const char* fault = nxSimulatedExchange::FindFault(_state->kind, wanted)) return _Refuse(fault);
    nxVenue& venue = *_job.GetServices().orders->GetVenue();
    const long long now = _job.GetServices().timers->GetTime();
    if (_state->isSent) {
        _Record("amend", changes);
        _state->amends.push_back(changes);
        venue.Amend(_state->id, changes, now);
    } else {
        _Record("new", wanted);
        _state->terms = wanted;
        _state->isSent = true;
        venue.Submit(_state->id, _state->kind, wanted, now);
    }
    _job.NoteRequest(*this);
    return true;
}

void nxHostOrder::Close(unsigned int volume, bool atOnce)
{
    const nxHostServices& services = _job.GetServices();
    _state->terms.volume = volume;
    _state->kind.crossProtected = _state->kind.crossProtected || atOnce;
    _state->isSent = true;
    _Record("flatten", _state->terms);
    if (atOnce) {
        services.orders->GetVenue()->TakeAtOnce(_state->id, _state->kind, _state->terms,
                                                services.timers->GetTime());
    } else {
        services.orders->GetVenue()->Submit(_state->id, _state->kind, _state->terms,
                                            services.timers->GetTime());
    }
    _job.NoteRequest(*this);
}

bool nxHostOrder::_PullOrder(const nxVolume&)
{
    const char* const fault = Pull();
    return fault == nullptr || _Refuse(fault);
}

const char* nxHostOrder::Pull()
{
    if (const char* end = _FindEnd()) return end;
    if (!_state->isSent) return "the order was never worked";
    _Record("pull", nxOrderTerms::MakeNoChange());
    _state->isCancelPending = _state->isPullUnanswered = true;
    _job.GetServices().orders->GetVenue()->Cancel(_state->id, _job.GetServices().timers->GetTime());
    _job.NoteRequest(*this);
    return nullptr;
}

void nxHostOrder::_Record(const char* request, const nxOrderTerms& terms)
{
    if (!_job.GetServices().output->IsRecording()) return;
    const std::string expiry = terms.expiry.IsValid() ? terms.expiry.GetAsString() : std::string();
    _job.GetServices().output->Record(_job, "order",
                                      {{"request", request},
                                       {"order", _state->id},
                                       {"product", _hostProduct.GetMarket().GetName()},
                                       {"side", nxGetText(_state->kind.side)},
                                       {"orderType", nxGetTypeText(_state->kind)},
                                       {"exec", nxGetText(_state->kind.execution)},
                                       {"timeInForce", nxGetText(_state->kind.duration)},
                                       {"spreadSpec", _state->spreadSpec},
                                       {"spreadInstance", _state->spreadInstance},
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
                                       {"userString", _job.GetOrderUserString()},
                                       {"userString2", _job.GetOrderUserString2()}});
}

void nxHostOrder::Apply(const nxExchangeEvent& event)
{
    using Kind = nxExchangeEvent::Kind;
    State& state = *_state;
    state.status = event.status;
    state.executed = event.executed;
    state.lastUpdateTime = event.due;
    if (event.kind == Kind::Amended && event.isRequested) state.terms.Merge(state.amends.front());
    if ((event.kind == Kind::Amended && event.isRequested) || event.kind == Kind::AmendRejected)
        state.amends.erase(state.amends.begin());
    if (event.kind == Kind::CancelRejected || event.kind == Kind::Cancelled) state.isCancelPending = false;
    if (event.kind == Kind::CancelRejected || (event.kind == Kind::Cancelled && event.isRequested))
        state.isPullUnanswered = false;
    state.terms.volume = event.volume;
    state.terms.price = event.price;
    state.terms.stopPrice = event.stopPrice;
    if (event.kind == Kind::Filled) {
        state.filled += nxExactAmount(event.fillPrice, event.fillVolume);
        state.lastFillPrice = event.fillPrice;
        state.lastFillVolume = event.fillVolume;
        state.lastFillTime = event.time;
        _SetLastFill(event.fillPrice, event.fillVolume);
    }
    if (_update != nullptr) _MakeUpdate(event);
    if (_job.GetServices().output->IsRecording()) _RecordEvent(event);
    // Nothing of it is on its way any more, and it lets nothing be sent.
    if (!IsOpen() && state.amends.empty() && !state.isPullUnanswered)
        _job.GetServices().orders->GetVenue()->Release(state.id);
}

void nxHostOrder::_RecordEvent(const nxExchangeEvent& event)
{
    const auto kind = std::ranges::find(EventNames, event.kind, [](const auto& row) { return row.kind; });
    const auto cause = std::ranges::find(CauseNames, event.cause, [](const auto& row) { return row.cause; });
    const bool isFill = event.kind == nxExchangeEvent::Kind::Filled;
    const std::string exchangeTime = nxTimeStamp::FromNanoseconds(event.time).GetAsString();
    _job.GetServices().output->Record(
        _job, "orderEvent",
        {{"event", kind->name},
         {"order", event.order},
         {"parent", _state->parent},
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
         {"cause", isFill ? cause->name : ""},
         {"error", event.error.IsSuccess() ? std::string_view() : event.error.GetAsString()},
         {"reason", event.reason}});
}

nxAlgoOrderUpdateObject& nxHostOrder::GetUpdate(const nxExchangeEvent& event)
{
    if (_update == nullptr) {
        _update = std::make_unique<Update>();
        _MakeUpdate(event);
    }
    return *_update->object;
}

// Without the names, of which scripts read the order's own.
void nxHostOrder::_MakeUpdate(const nxExchangeEvent& event)
{
    nxOrder record;
    record.SetOrderID(_state->id);
    record.SetBuySell(GetBuySellEnum());
    record.SetOrderType(_state->kind.isMarket ? nxOrderType_Market : nxOrderType_Limit);
    record.SetOrderStatus(event.status);
    record.SetPrice(event.price);
    record.SetStopPrice(event.stopPrice);
    record.SetVolume(event.volume);
    record.SetExecutedVolume(event.executed);
    record.SetResidualVolume(GetWorking());
    record.SetAverageFillPrice(GetAveragePrice());
    const bool isFill = event.kind == nxExchangeEvent::Kind::Filled;
    const nxDateTime exchangeTime = nxTimeStamp::FromNanoseconds(event.time).GetAsDateTime();
    _update->transaction.SetOrder(record);
    _update->transaction.SetTransactionTime(exchangeTime);
    _update->transaction.SetFillPrice(isFill ? event.fillPrice : nxDecimal());
    _update->transaction.SetFillVolume(isFill ? nxVolume(event.fillVolume) : nxVolume());
    _update->transaction.SetError(event.error);
    _update->transaction.SetErrorText(event.reason);
    // Anew in its place, where a script that kept it still finds it.
    _update->object.emplace(&_job, this, &_update->transaction, nxTimeStamp::FromNanoseconds(event.due));
    if (isFill) _update->object->SetExchangeFillTime(exchangeTime);
}
