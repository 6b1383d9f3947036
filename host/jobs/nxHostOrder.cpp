#include "host/jobs/nxHostOrder.h"

#include "host/jobs/nxOrderServices.h"
#include "host/jobs/nxOutputServices.h"
#include "host/jobs/nxTimerServices.h"
#include "host/jobs/nxTradingJob.h"
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

}  // namespace

// What a million orders that are over weigh.
static_assert(sizeof(nxHostOrder) <= 216 && sizeof(nxAlgoOrderUpdateObject) <= 64);

nxHostOrder::nxHostOrder(nxTradingJob& job, nxHostProduct& product, const nxOrderKind& kind, unsigned int id)
    : nxAlgoOrderObject(&job, &product),
      _live(std::make_unique<Live>()),
      _id(id),
      _isMarket(kind.isMarket),
      _orderSide(kind.side),
      _execution(kind.execution),
      _duration(kind.duration)
{
    _live->kind = kind;
    SetSide(nxGetText(kind.side));
}

nxHostOrder::nxHostOrder(nxTradingJob& job, nxHostProduct& product, const Texts& texts, unsigned int id)
    : nxHostOrder(job, product, GetKindOf(texts), id)
{
    if (!texts.spreadSpec.empty()) _MakeRare().spreadSpec = texts.spreadSpec;
    _live->kind.product = job.GetServices().orders->GetVenueProduct(product);
    _live->kind.owner = job.GetIndex();
    _live->kind.crossProtected = job.IsCrossProtected();
}

nxHostOrder::nxHostOrder(nxTradingJob& job, nxHostProduct& product, const nxExchangeOrder& child,
                         nxHostOrder& parent)
    : nxHostOrder(job, product, child.kind, child.id)
{
    Rare& rare = _MakeRare();
    rare.parent = parent.GetID();
    rare.spreadSpec = parent._GetRare().spreadSpec;
    rare.spreadInstance = parent._GetRare().spreadInstance;
    _SetTerms(child.terms);
    _isSent = true;
}

nxHostOrder::nxHostOrder(nxTradingJob& viewer, nxHostProduct& product, const nxHostOrder& original)
    : nxAlgoOrderObject(&viewer, &product)
{
    _MakeRare().original = &original;
    SetSide(original.GetSide());
}

nxHostOrder::~nxHostOrder() = default;

void nxHostOrder::Refresh(const nxHostOrder& original)
{
    SetReference(original.GetReference());
    if (original._lastFillTime != NoTime)
        _SetLastFill(original._GetLastFillPrice(), original._GetLastFillVolume());
}

const nxHostOrder::Rare& nxHostOrder::_GetRare() const
{
    static const Rare none;
    const nxHostOrder& order = _Get();
    return order._rare == nullptr ? none : *order._rare;
}

nxHostOrder::Rare& nxHostOrder::_MakeRare()
{
    if (_rare == nullptr) _rare = std::make_unique<Rare>();
    return *_rare;
}

nxTradingJob& nxHostOrder::_GetViewer() const
{
    return static_cast<nxTradingJob&>(*GetJob());  // who makes every order of the host
}

nxHostProduct& nxHostOrder::GetHostProduct() const
{
    return static_cast<nxHostProduct&>(*_GetProduct());
}

// What of them scripts can read.
void nxHostOrder::_SetTerms(const nxOrderTerms& terms)
{
    _live->terms = terms;
    _volume = nxOrderTerms::GetOr(terms.volume, 0);
    _price = terms.price;
    const bool isPlain = !terms.stopPrice.IsValid() && !terms.icebergMinPeak.IsValid() &&
                         !terms.bracketProfit.IsValid() && !terms.bracketStopLoss.IsValid();
    if (isPlain && _rare == nullptr) return;
    Rare& rare = _MakeRare();
    rare.stopPrice = terms.stopPrice;
    rare.icebergMinPeak = terms.icebergMinPeak;
    rare.icebergMaxPeak = terms.icebergMaxPeak;
    rare.icebergThreshold = terms.icebergThreshold;
    rare.bracketProfit = terms.bracketProfit;
    rare.bracketStopLoss = terms.bracketStopLoss;
    rare.bracketStopLimit = terms.bracketStopLimit;
    rare.bracketStopIsLimit = terms.bracketStopIsLimit.value_or(false);
    rare.bracketStopTrails = terms.bracketStopTrails.value_or(false);
}

void nxHostOrder::SetSpreadInstance(const std::string& text)
{
    if (!text.empty()) _MakeRare().spreadInstance = text;
}

bool nxHostOrder::IsOpen() const
{
    const nxOrderStatusEnum status = _GetStatus();
    return IsSent() && (status == nxOrderStatus_Pending || status.IsWorkingOrder());
}

bool nxHostOrder::IsCurrentJob()
{
    return &_Get() == this;
}

bool nxHostOrder::_IsPendingAmend() const
{
    const Live* const live = _Get()._live.get();
    return live != nullptr && !live->amends.empty();
}

bool nxHostOrder::_IsPendingCancel() const
{
    const Live* const live = _Get()._live.get();
    return live != nullptr && live->isCancelPending;
}

unsigned int nxHostOrder::GetWorking()
{
    return _GetStatus().IsWorkingOrder() ? GetVolume() - GetExecuted() : 0;
}

std::string nxHostOrder::GetBracketStopLossType()
{
    if (!_GetRare().bracketStopLoss.IsValid()) return {};
    return nxGetTypeText(!_GetRare().bracketStopIsLimit);
}

unsigned int nxHostOrder::GetOrderQPos()
{
    const nxExchangeOrder* const order = _GetViewer().GetServices().orders->GetVenue()->FindOrder(GetID());
    return order != nullptr && order->isResting && !order->kind.isMarket ? order->ahead.GetValue() : 0;
}

nxAlgoOrderObject* nxHostOrder::_GetParent()
{
    return _GetRare().parent == 0 ? nullptr : _GetViewer().GetOrder(_GetRare().parent);
}

std::string nxHostOrder::_GetAccount()
{
    return GetOwner().GetOptions().account;
}

void nxHostOrder::_SetLastExchangeFillTime(nxAlgoTimeStamp& time)
{
    const long long known = _Get()._lastFillTime;
    if (known != NoTime) time.SetTimeStamp(nxTimeStamp::FromNanoseconds(known));
}

void nxHostOrder::_SetLastVorantUpdateTime(nxAlgoTimeStamp& time)
{
    const long long known = _Get()._lastUpdateTime;
    if (known != NoTime) time.SetTimeStamp(nxTimeStamp::FromNanoseconds(known));
}

bool nxHostOrder::_Refuse(const std::string& text)
{
    _GetViewer().SetError(text);
    return false;
}

const char* nxHostOrder::_FindEnd() const
{
    if (!IsOpen() && IsSent())
        return _GetStatus() == nxOrderStatus_Filled ? "the order is filled"
                                                    : "the order is no longer working";
    if (_IsPendingCancel()) return "the order is being pulled";
    if (&_Get() != this) return "the order is another job's";
    return nullptr;
}

bool nxHostOrder::_WorkOrder(const nxAlgoOrderParameters& parameters)
{
    const nxHostServices& services = _GetViewer().GetServices();
    if (const char* end = _FindEnd()) return _Refuse(end);
    if (!services.orders->MayTrade(_GetViewer())) return _Refuse("the job has ended");
    if (const std::string refusal = FindUnsupported(parameters); !refusal.empty()) return _Refuse(refusal);
    const nxOrderTerms changes = GetTermsOf(parameters);
    nxOrderTerms wanted = _live->terms;
    for (const nxOrderTerms& amend : _live->amends)
        wanted.Merge(amend);
    wanted.Merge(changes);
    if (const char* fault = nxSimulatedExchange::FindFault(_live->kind, wanted)) return _Refuse(fault);
    nxVenue& venue = *services.orders->GetVenue();
    const long long now = services.timers->GetTime();
    if (_isSent) {
        _Record("amend", changes);
        _live->amends.push_back(changes);
        venue.Amend(_id, changes, now);
    } else {
        _Record("new", wanted);
        _SetTerms(wanted);
        _isSent = true;
        venue.Submit(_id, _live->kind, wanted, now);
    }
    _GetViewer().NoteRequest(*this);
    return true;
}

void nxHostOrder::Close(unsigned int volume, bool atOnce)
{
    const nxHostServices& services = _GetViewer().GetServices();
    nxVenue& venue = *services.orders->GetVenue();
    const long long now = services.timers->GetTime();
    nxOrderTerms terms;
    terms.volume = volume;
    _SetTerms(terms);
    _live->kind.crossProtected = _live->kind.crossProtected || atOnce;
    _isSent = true;
    _Record("flatten", terms);
    if (atOnce) {
        venue.TakeAtOnce(_id, _live->kind, terms, now);
    } else {
        venue.Submit(_id, _live->kind, terms, now);
    }
    _GetViewer().NoteRequest(*this);
}

bool nxHostOrder::_PullOrder(const nxVolume&)
{
    const char* const fault = Pull();
    return fault == nullptr || _Refuse(fault);
}

const char* nxHostOrder::Pull()
{
    if (const char* end = _FindEnd()) return end;
    if (!_isSent) return "the order was never worked";
    _Record("pull", nxOrderTerms::MakeNoChange());
    _live->isCancelPending = _live->isPullUnanswered = true;
    const nxHostServices& services = _GetViewer().GetServices();
    services.orders->GetVenue()->Cancel(_id, services.timers->GetTime());
    _GetViewer().NoteRequest(*this);
    return nullptr;
}

void nxHostOrder::Apply(const nxExchangeEvent& event)
{
    using Kind = nxExchangeEvent::Kind;
    Live& live = *_live;
    _status = static_cast<unsigned short>(event.status.GetValue());
    _executed = event.executed;
    _lastUpdateTime = event.due;
    _lastError = event.error.GetValue();
    _lastIsFill = event.kind == Kind::Filled;
    if (event.kind == Kind::Amended && event.isRequested) live.terms.Merge(live.amends.front());
    if ((event.kind == Kind::Amended && event.isRequested) || event.kind == Kind::AmendRejected)
        live.amends.erase(live.amends.begin());
    if (event.kind == Kind::CancelRejected || event.kind == Kind::Cancelled) live.isCancelPending = false;
    if (event.kind == Kind::CancelRejected || (event.kind == Kind::Cancelled && event.isRequested))
        live.isPullUnanswered = false;
    nxOrderTerms terms = live.terms;
    terms.volume = event.volume;
    terms.price = event.price;
    terms.stopPrice = event.stopPrice;
    _SetTerms(terms);
    if (_lastIsFill) _AddFill(event);
    _GetViewer().GetShownRecord().Forget(*this);
    if (_update != nullptr) _ShowUpdate();
    const nxHostServices& services = _GetViewer().GetServices();
    if (services.output->IsRecording()) _RecordEvent(event);
    // Nothing of it is on its way any more, and it lets nothing be sent.
    if (IsOpen() || !live.amends.empty() || live.isPullUnanswered) return;
    services.orders->GetVenue()->Release(_id);
    _live.reset();
}

void nxHostOrder::_AddFill(const nxExchangeEvent& event)
{
    constexpr unsigned char places = 10;
    _live->filled += nxExactAmount(event.fillPrice, event.fillVolume);
    _averagePrice = _live->filled.GetShare(1, _executed, places).GetAsDecimal(places);
    _averagePrice.Normalise(0);
    _lastFillTime = event.time;
    _SetLastFill(event.fillPrice, event.fillVolume);
}

nxAlgoOrderUpdateObject& nxHostOrder::GetUpdate()
{
    if (_update == nullptr) _ShowUpdate();
    return *_update;
}

// Without a record of its own: what there is to know of the event, the order knows.
void nxHostOrder::_ShowUpdate()
{
    nxAlgoOrderUpdateObject update(GetJob(), this, nullptr, nxTimeStamp::FromNanoseconds(_lastUpdateTime));
    if (_lastIsFill) update.SetExchangeFillTime(nxTimeStamp::FromNanoseconds(_lastFillTime).GetAsDateTime());
    if (_update == nullptr) {
        _update = std::make_unique<nxAlgoOrderUpdateObject>(update);
    } else {
        *_update = update;  // in its place, where a script that kept it still finds it
    }
}

// Without the names, of which scripts read the order's own.
const nxOrderTransaction* nxHostOrder::_GetLastTransaction() const
{
    ShownRecord& shown = _GetViewer().GetShownRecord();
    if (shown.order == this) return &shown.transaction;
    auto record = std::make_shared<nxOrder>();
    record->SetOrderID(_id);
    record->SetBuySell(nxGetBuySell(_orderSide));
    record->SetOrderType(_isMarket ? nxOrderType_Market : nxOrderType_Limit);
    record->SetOrderStatus(_GetStatus());
    record->SetPrice(_price);
    record->SetStopPrice(_GetRare().stopPrice);
    record->SetVolume(_volume);
    record->SetExecutedVolume(_executed);
    record->SetResidualVolume(_GetStatus().IsWorkingOrder() ? _volume - _executed : 0);
    record->SetAverageFillPrice(_averagePrice);
    shown.order = this;
    shown.transaction.SetOrder(std::move(record));
    shown.transaction.SetFillPrice(_lastIsFill ? _GetLastFillPrice() : nxDecimal());
    shown.transaction.SetFillVolume(_lastIsFill ? _GetLastFillVolume() : nxVolume());
    shown.transaction.SetError(nxErrorEnum(_lastError));
    return &shown.transaction;
}
