#include "host/results/nxResultCollector.h"

#include <algorithm>
#include <cmath>

#include "host/exchange/nxExchangeEvent.h"
#include "host/feed/nxFeedEvent.h"
#include "host/market/nxMarketProduct.h"
#include "host/market/nxMidPrice.h"

void nxResultCollector::AddProduct(const nxProductAccount& none, const nxMarketProduct& market)
{
    const nxDecimal& pointValue = none.GetPointValue();
    _products.push_back({none.GetCurrency(), pointValue, &market, nxMarkouts(pointValue), {}, {}, {}});
}

nxResultAccount& nxResultCollector::_GetAccount(std::optional<unsigned int> job,
                                                const nxCurrencyEnum& currency)
{
    if (nxResultAccount* const known = _accounts.Find(job, currency)) return *known;
    nxResultAccount& made = _accounts.Make(job, currency, _options.capital);
    for (const long long day : _days) {
        made.data.days.push_back({day, {}});
        if (job && _listeners.onDay) _listeners.onDay(made.data, made.data.days.back(), {});
    }
    if (job && _options.hasManyJobs) made.all = &_GetAccount(std::nullopt, currency);
    return made;
}

nxResultCollector::Holding& nxResultCollector::_Get(unsigned int job, unsigned int number)
{
    Product& product = _products[number];
    for (Holding& known : product.holdings)
        if (known.job == job) return known;
    return product.holdings.emplace_back(Holding{job,
                                                 &_GetAccount(job, product.currency),
                                                 nxLotBook(number, product.pointValue, _options.matching),
                                                 {},
                                                 false,
                                                 {}});
}

nxResultCollector::Order& nxResultCollector::_GetOrder(unsigned int number)
{
    const unsigned int place = number - _endedOrders;
    if (place >= _orders.size()) _orders.resize(place + 1);
    return _orders[place];
}

void nxResultCollector::_EndOrder(unsigned int number)
{
    _GetOrder(number).isOver = true;
    for (; !_orders.empty() && _orders.front().isOver; ++_endedOrders)
        _orders.pop_front();
}

nxDecimal nxResultCollector::GetDecisionPrice(unsigned int order) const
{
    const unsigned int place = order - _endedOrders;
    if (order < _endedOrders || place >= _orders.size() || !_orders[place].hasDecision) return {};
    return nxDecimal::FromMantissa(_orders[place].mantissa, _orders[place].places);
}

void nxResultCollector::_NoteDecision(unsigned int number, const nxDecimal& price)
{
    Order& order = _GetOrder(number);
    order.hasDecision = price.IsValid();
    if (!order.hasDecision) return;
    order.mantissa = price.GetMantissa();
    order.places = price.GetDecimalPlaces();
}

void nxResultCollector::_NoteVolume(const nxExchangeOrder& order, unsigned int volume)
{
    if (order.id < _endedOrders) return;  // a request that came too late changes nothing
    Order& known = _GetOrder(order.id);
    _Get(order.kind.owner, order.kind.product).account->data.orderedVolume +=
        static_cast<unsigned long long>(volume) - known.volume;
    known.volume = volume;
}

void nxResultCollector::OnRequest(const nxExchangeOrder& order, nxOrderRequest request, const nxOrderTerms&,
                                  const nxMarketProduct& market, long long, long long)
{
    nxResultData& data = _Get(order.kind.owner, order.kind.product).account->data;
    ++data.messages;
    if (request != nxOrderRequest::New) return;
    ++data.orders;
    _NoteDecision(order.id, nxGetMidPrice(market.GetPrice()));
    _NoteVolume(order, nxOrderTerms::GetOr(order.terms.volume, 0));
}

void nxResultCollector::OnEvent(const nxExchangeOrder& order, const nxExchangeEvent& event,
                                const nxMarketProduct& market)
{
    using Kind = nxExchangeEvent::Kind;
    if (event.kind == Kind::QueueMoved) return;
    if (event.kind == Kind::Filled) {
        _AddFill(order, event);
        if (event.status == nxOrderStatus_Filled) _EndOrder(order.id);
        return;
    }
    if (event.kind == Kind::ChildCreated) {
        ++_Get(order.kind.owner, order.kind.product).account->data.orders;
        _NoteDecision(order.id, nxGetMidPrice(market.GetPrice()));
    }
    _NoteVolume(order, event.volume);
    if (event.kind == Kind::Cancelled || event.kind == Kind::Rejected) _EndOrder(order.id);
    // Nothing is filled any more, of an order that may have closed something.
    if (event.kind == Kind::Cancelled) {
        Holding& holding = _Get(order.kind.owner, order.kind.product);
        holding.lots.CompleteOrder(order.id,
                                   [&](nxRoundTrip&& trip) { _TakeTrip(holding, std::move(trip)); });
    }
}

void nxResultCollector::_AddFill(const nxExchangeOrder& order, const nxExchangeEvent& fill)
{
    const nxExactAmount fee = std::exchange(_fee, {});
    _time = std::max(_time, fill.time);
    Product& product = _products[order.kind.product];
    Holding& holding = _Get(order.kind.owner, order.kind.product);
    const nxSide side = order.kind.side;
    holding.turnover +=
        holding.account->Add({side, fill.fillPrice, fill.fillVolume, fee, product.pointValue, fill.isMaker,
                              fill.cause == nxFillCause::OwnOrder, GetDecisionPrice(order.id)});
    _KeepMid(product);
    product.markouts.Add(holding.account->data, side, fill.fillPrice, fill.fillVolume, fill.time);
    holding.lots.Add({side, fill.fillPrice, fill.fillVolume, fee, order.id, fill.time,
                      fill.status == nxOrderStatus_Filled},
                     [&](nxRoundTrip&& trip) { _TakeTrip(holding, std::move(trip)); });
}

void nxResultCollector::_KeepMid(Product& product)
{
    product.mid = nxGetMidPrice(product.market->GetPrice());
}

void nxResultCollector::_TakeTrip(const Holding& holding, nxRoundTrip&& trip)
{
    holding.account->data.trips.Add(trip);
    if (_listeners.onTrip) _listeners.onTrip(holding.job, trip);
}

void nxResultCollector::OnAdjustment(unsigned int job, unsigned int product, const nxAdjustment& adjustment)
{
    Holding& holding = _Get(job, product);
    holding.lots.Adjust(adjustment, [&](nxRoundTrip&& trip) { _TakeTrip(holding, std::move(trip)); });
}

void nxResultCollector::OnBar(unsigned int job, unsigned int product, const nxFeedBar& bar)
{
    nxLotBook& lots = _Get(job, product).lots;
    lots.See(bar.low);
    lots.See(bar.high);
}

void nxResultCollector::OnValue(unsigned int job, unsigned int product, const nxPositionKeeper& position,
                                const nxDecimal& mark, const nxTradingStatistics::Money& money)
{
    Holding& holding = _Get(job, product);
    nxResultAccount& account = *holding.account;
    holding.lots.See(mark);
    const long long net = position.GetNet();
    const nxExactAmount exposure(mark, net, _products[product].pointValue);
    const nxExactAmount change = exposure - holding.exposure;
    const int opened = (net != 0 ? 1 : 0) - (holding.isOpen ? 1 : 0);
    holding.exposure = exposure;
    holding.isOpen = net != 0;
    const nxExactAmount profitChange = money.profit - account.data.profit;
    for (nxResultAccount* each : {&account, account.all}) {
        if (each == nullptr) continue;
        each->Move(change, opened, _time);
        _See(*each, each->data.profit + profitChange);
    }
}

void nxResultCollector::_See(nxResultAccount& account, const nxExactAmount& profit)
{
    const nxEquityBucket sample = account.See(profit, _time);
    if (_listeners.onEquity) _listeners.onEquity(account.data, _time, sample);
}

void nxResultCollector::EndDay(long long day, bool hasData)
{
    if (!hasData) return;
    _days.push_back(day);
    for (Product& product : _products)
        product.closes.push_back(nxGetMidPrice(product.market->GetPrice()).GetAsDouble());
    _accounts.ForEach([&](nxResultAccount& account) {
        nxResultData& data = account.data;
        data.days.push_back({day, data.profit});
        if (_listeners.onDay && data.job) _listeners.onDay(data, data.days.back(), _GetPrices(account));
    });
}

nxResultCollector::Prices nxResultCollector::_GetPrices(const nxResultAccount& account) const
{
    Prices prices;
    for (std::size_t i = 0; i < _products.size(); ++i)
        if (std::ranges::find(_products[i].holdings, &account, &Holding::account) !=
            _products[i].holdings.end())
            prices.emplace_back(static_cast<unsigned int>(i), _products[i].closes.back());
    return prices;
}

void nxResultCollector::Finish(long long last)
{
    for (Product& product : _products) {
        // A price of the last row's own time counts.
        product.markouts.Settle(nxTime::GetLater(last, 1), nxGetMidPrice(product.market->GetPrice()));
        for (Holding& holding : product.holdings)
            holding.lots.Complete([&](nxRoundTrip&& trip) { _TakeTrip(holding, std::move(trip)); });
    }
    _accounts.ForEach([last](nxResultAccount& account) { account.Finish(last); });
    for (const auto& account : _accounts.GetSingle()) {
        // One that an order could still have added to was complete later than others that ended after it.
        account->data.trips.SortByExit();
        _ChooseBenchmark(*account);
    }
}

void nxResultCollector::_ChooseBenchmark(nxResultAccount& account) const
{
    nxExactAmount most;
    for (std::size_t i = 0; i < _products.size(); ++i) {
        nxExactAmount turnover;
        for (const Holding& holding : _products[i].holdings)
            if (holding.account == &account || holding.account->all == &account) turnover += holding.turnover;
        if (!(most - turnover).IsNegative()) continue;
        most = turnover;
        account.data.benchmark = static_cast<unsigned int>(i);
    }
    if (!account.data.benchmark) return;
    const std::vector<double>& closes = _products[*account.data.benchmark].closes;
    const std::size_t before = account.data.days.size() - closes.size();
    for (std::size_t i = 0; i < closes.size(); ++i)
        account.data.days[before + i].benchmark = closes[i];
}

std::vector<nxResultData> nxResultCollector::TakeResults()
{
    return _accounts.Take([this](nxResultAccount& all) { _ChooseBenchmark(all); });
}
