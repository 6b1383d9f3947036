#include "host/jobs/nxOrderTicket.h"

// What a million orders that are over weigh.
static_assert(sizeof(nxOrderTicket) <= 96);

nxOrderTicket::nxOrderTicket(const nxOrderKind& kind, unsigned int id)
    : _live(std::make_unique<Live>()),
      _side(kind.side),
      _execution(kind.execution),
      _id(id),
      _duration(kind.duration),
      _isMarket(kind.isMarket)
{
    _live->kind = kind;
    if (_execution == nxOrderExecution::Iceberg) _special = Iceberg();
    if (_execution == nxOrderExecution::Bracket) _special = Bracket();
}

nxOrderTicket::nxOrderTicket(const nxExchangeOrder& child, const nxOrderTicket& parent)
    : nxOrderTicket(child.kind, child.id)
{
    _parent = parent._id;
    if (parent._spread != nullptr) _spread = std::make_unique<Spread>(*parent._spread);
    Send(child.terms);
}

void nxOrderTicket::SetSpread(const std::string& legs, const std::string& instance)
{
    if (!legs.empty() || !instance.empty()) _spread = std::make_unique<Spread>(Spread{legs, instance});
}

const nxOrderTicket::Spread& nxOrderTicket::GetSpread() const
{
    static const Spread none;
    return _spread == nullptr ? none : *_spread;
}

nxDecimal nxOrderTicket::GetStopPrice() const
{
    const bool isStop = _execution == nxOrderExecution::Stop || _execution == nxOrderExecution::TrailingStop;
    return isStop ? _special.stopPrice : nxDecimal();
}

nxOrderTicket::Iceberg nxOrderTicket::GetIceberg() const
{
    return _execution == nxOrderExecution::Iceberg ? _special.iceberg : Iceberg();
}

nxOrderTicket::Bracket nxOrderTicket::GetBracket() const
{
    return _execution == nxOrderExecution::Bracket ? _special.bracket : Bracket();
}

const char* nxOrderTicket::FindEnd() const
{
    if (_isSent && !IsOpen())
        return GetStatus() == nxOrderStatus_Filled ? "the order is filled" : "the order is no longer working";
    return IsCancelPending() ? "the order is being pulled" : nullptr;
}

bool nxOrderTicket::IsOpen() const
{
    return _isSent && (_status == nxOrderStatus_Pending || GetStatus().IsWorkingOrder());
}

nxOrderTerms nxOrderTicket::GetWanted(const nxOrderTerms& changes) const
{
    nxOrderTerms wanted = _live->terms;
    for (const nxOrderTerms& amend : _live->amends)
        wanted.Merge(amend);
    wanted.Merge(changes);
    return wanted;
}

void nxOrderTicket::Send(const nxOrderTerms& terms)
{
    _SetTerms(terms);
    _isSent = true;
}

// What of them can still be asked when the order is over.
void nxOrderTicket::_SetTerms(const nxOrderTerms& terms)
{
    _live->terms = terms;
    _volume = nxOrderTerms::GetOr(terms.volume, 0);
    _price = terms.price;
    switch (_execution) {
        case nxOrderExecution::Stop:
        case nxOrderExecution::TrailingStop:
            _special = terms.stopPrice;
            break;
        case nxOrderExecution::Iceberg:
            _special = Iceberg{terms.icebergMinPeak, terms.icebergMaxPeak, terms.icebergThreshold};
            break;
        case nxOrderExecution::Bracket:
            _special =
                Bracket{terms.bracketProfit, terms.bracketStopLoss, terms.bracketStopLimit,
                        terms.bracketStopIsLimit.value_or(false), terms.bracketStopTrails.value_or(false)};
            break;
        case nxOrderExecution::None:
        case nxOrderExecution::ImmediateOrCancel:
        case nxOrderExecution::FillOrKill:
            break;
    }
}

bool nxOrderTicket::Apply(const nxExchangeEvent& event)
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
    live.terms.volume = event.volume;
    live.terms.price = event.price;
    live.terms.stopPrice = event.stopPrice;
    _SetTerms(live.terms);
    if (_lastIsFill) _AddFill(event);
    // Something of it is on its way yet, or it lets something be sent.
    if (IsOpen() || !live.amends.empty() || live.isPullUnanswered) return false;
    _live.reset();
    return true;
}

void nxOrderTicket::_AddFill(const nxExchangeEvent& event)
{
    constexpr unsigned char places = 10;
    _live->filled += nxExactAmount(event.fillPrice, event.fillVolume);
    nxDecimal average = _live->filled.GetShare(1, _executed, places).GetAsDecimal(places);
    average.Normalise(0);
    _averagePrice = average;
    _lastFillTime = event.time;
}

std::shared_ptr<const nxOrder> nxOrderTicket::MakeRecord() const
{
    auto record = std::make_shared<nxOrder>();
    record->SetOrderID(_id);
    record->SetBuySell(nxGetBuySell(_side));
    record->SetOrderType(_isMarket ? nxOrderType_Market : nxOrderType_Limit);
    record->SetOrderStatus(GetStatus());
    record->SetPrice(_price);
    record->SetStopPrice(GetStopPrice());
    record->SetVolume(_volume);
    record->SetExecutedVolume(_executed);
    record->SetResidualVolume(GetWorking());
    record->SetAverageFillPrice(_averagePrice);
    return record;
}
