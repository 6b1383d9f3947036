#include "host/accounts/nxLedger.h"

#include <algorithm>

#include "host/exchange/nxExchangeEvent.h"
#include "host/market/nxMarketProduct.h"

nxLedger::Holding& nxLedger::_Get(unsigned int job, unsigned int product)
{
    std::vector<Holding>& holdings = _products[product].holdings;
    const auto known = std::ranges::find(holdings, job, &Holding::job);
    if (known != holdings.end()) return *known;
    return holdings.emplace_back(Holding{job, _products[product].none, {}, {}, {}, {}});
}

nxTradingStatistics::Money& nxLedger::_GetMoney(const Holding& holding)
{
    return _jobs[holding.job][holding.account.GetCurrency()];
}

void nxLedger::OnEvent(const nxExchangeOrder& order, const nxExchangeEvent& event,
                       const nxMarketProduct& market)
{
    if (event.kind == nxExchangeEvent::Kind::Filled) {
        if (order.kind.owner >= _jobs.size()) _jobs.resize(order.kind.owner + 1);
        nxTradingStatistics& job = _jobs[order.kind.owner];
        ++job.fills;
        job.volume += event.fillVolume;
        if (event.isMaker) job.makerVolume += event.fillVolume;
        _Get(order.kind.owner, order.kind.product)
            .account.AddFill(order.kind.side, event.fillPrice, event.fillVolume, event.isMaker);
        _filled.emplace_back(order.kind.owner, order.kind.product);
    }
    if (_next != nullptr) _next->OnEvent(order, event, market);
}

void nxLedger::_ValueFilled()
{
    for (const auto& [job, product] : std::exchange(_filled, {})) {
        Holding& holding = _Get(job, product);
        _Value(holding, holding.account.GetMark(_products[product].market->GetPrice()));
    }
}

void nxLedger::Mark(unsigned int product, const nxFeedBar* bar)
{
    if (_products[product].holdings.empty()) return;
    Settle();
    for (Holding& holding : _products[product].holdings) {
        if (holding.account.GetKeeper().GetNet() == 0) continue;
        if (bar != nullptr) _LookAtWorst(holding, *bar);
        const nxDecimal mark = holding.account.GetMark(_products[product].market->GetPrice());
        if (mark != holding.mark) _Value(holding, mark);
    }
}

// The sums of a currency change by what one of its products does.
void nxLedger::_Value(Holding& holding, const nxDecimal& mark)
{
    const nxPositionKeeper& keeper = holding.account.GetKeeper();
    const nxExactAmount profit = keeper.GetTotalProfit(mark), open = keeper.GetOpenProfit(mark);
    nxTradingStatistics::Money& money = _GetMoney(holding);
    money.profit += profit - holding.profit;
    money.open += open - holding.open;
    money.fees += keeper.GetTotal().fees - holding.fees;
    holding.mark = mark;
    holding.profit = profit;
    holding.open = open;
    holding.fees = keeper.GetTotal().fees;
    const nxExactAmount fallen = money.best - money.profit;
    if (fallen.IsNegative()) money.best = money.profit;
    if ((money.drawdown - fallen).IsNegative()) money.drawdown = fallen;
    if ((money.worstDrawdown - fallen).IsNegative()) money.worstDrawdown = fallen;
}

// How far the profit fell within the bar, at its low for what is long, at its high for what is short.
void nxLedger::_LookAtWorst(const Holding& holding, const nxFeedBar& bar)
{
    const nxPositionKeeper& keeper = holding.account.GetKeeper();
    nxTradingStatistics::Money& money = _GetMoney(holding);
    money.hasBars = true;
    const nxExactAmount worst = keeper.GetTotalProfit(keeper.GetNet() > 0 ? bar.low : bar.high);
    const nxExactAmount fallen = money.best - (money.profit - holding.profit + worst);
    if ((money.worstDrawdown - fallen).IsNegative()) money.worstDrawdown = fallen;
}

void nxLedger::OnRequest(const nxExchangeOrder& order, nxOrderRequest request, const nxOrderTerms& terms,
                         const nxMarketProduct& market, long long sent, long long due)
{
    if (_next != nullptr) _next->OnRequest(order, request, terms, market, sent, due);
}

void nxLedger::OnQueueMove(const nxExchangeOrder& order, const nxVolume& before, nxQueueMove move,
                           long long time)
{
    if (_next != nullptr) _next->OnQueueMove(order, before, move, time);
}

void nxLedger::OnMarket(unsigned int product, const nxMarketProduct& market, const nxTraded* traded,
                        long long time)
{
    if (_next != nullptr) _next->OnMarket(product, market, traded, time);
}
