#include "host/accounts/nxLedger.h"

#include <algorithm>

#include "host/exchange/nxExchangeEvent.h"
#include "host/market/nxMarketProduct.h"

namespace {

void TakeLargest(nxExactAmount& largest, const nxExactAmount& amount)
{
    if ((largest - amount).IsNegative()) largest = amount;
}

}  // namespace

nxLedger::Holding& nxLedger::_Get(unsigned int job, unsigned int product)
{
    std::vector<Holding>& holdings = _products[product].holdings;
    const auto known = std::ranges::find(holdings, job, &Holding::job);
    if (known != holdings.end()) return *known;
    return holdings.emplace_back(Holding{job, _products[product].none, {}, {}, false});
}

void nxLedger::OnEvent(const nxExchangeOrder& order, const nxExchangeEvent& event, const nxMarketProduct&)
{
    const bool isSelfTrade = event.error == nxError_OrderMeetsOwn;
    if (event.kind != nxExchangeEvent::Kind::Filled && !isSelfTrade) return;
    if (order.kind.owner >= _jobs.size()) _jobs.resize(order.kind.owner + 1);
    nxTradingStatistics& job = _jobs[order.kind.owner];
    if (isSelfTrade) {
        ++job.selfTrades;
        return;
    }
    job.AddFill(event.fillVolume, event.isMaker, event.cause);
    Holding& holding = _Get(order.kind.owner, order.kind.product);
    const nxExactAmount fees = holding.account.GetKeeper().GetTotal().fees;
    _lastFee = holding.account.AddFill(order.kind.side, event);
    job[holding.account.GetCurrency()].impact += holding.account.GetImpact(event);
    if (!event.isMaker && !event.impact.IsValid()) ++job.withoutImpact;
    holding.isFilled = true;
    if (_observer != nullptr)
        _observer->OnFill(order, event, holding.account.GetKeeper().GetTotal().fees - fees);
    _filled.emplace_back(order.kind.owner, order.kind.product);
}

const nxProductAccount& nxLedger::GetAccount(unsigned int job, unsigned int product) const
{
    return std::ranges::find(_products[product].holdings, job, &Holding::job)->account;
}

nxLedger::Position nxLedger::GetPosition(unsigned int job, unsigned int product) const
{
    const std::vector<Holding>& holdings = _products[product].holdings;
    const auto known = std::ranges::find(holdings, job, &Holding::job);
    if (known == holdings.end()) return {0, {}};
    return {known->account.GetKeeper().GetNet(), known->mark};
}

nxExactAmount nxLedger::GetProfit(unsigned int job, const nxCurrencyEnum& currency) const
{
    if (job >= _jobs.size()) return {};
    const auto money = std::ranges::find(_jobs[job].money, currency, &nxTradingStatistics::Money::currency);
    return money == _jobs[job].money.end() ? nxExactAmount() : money->profit;
}

nxTradingStatistics nxLedger::GetStatistics(unsigned int job) const
{
    if (job >= _jobs.size()) return {};
    nxTradingStatistics statistics = _jobs[job];
    for (const Product& product : _products) {
        const auto holding = std::ranges::find(product.holdings, job, &Holding::job);
        if (holding == product.holdings.end()) continue;
        const nxPositionKeeper& keeper = holding->account.GetKeeper();
        nxTradingStatistics::Money& money = statistics[holding->account.GetCurrency()];
        money.open += keeper.GetOpenProfit(holding->mark);
        money.fees += keeper.GetTotal().fees;
    }
    return statistics;
}

std::vector<nxLedger::AdjustedJob> nxLedger::Adjust(unsigned int product, const nxAdjustment& adjustment)
{
    Settle();
    std::vector<AdjustedJob> jobs;
    for (Holding& holding : _products[product].holdings) {
        if (holding.account.GetKeeper().GetNet() == 0) continue;
        const nxAdjusted adjusted = holding.account.GetAdjusted(adjustment, holding.mark);
        holding.account.Adjust(adjustment, adjusted);
        nxTradingStatistics::Money& money = _jobs[holding.job][holding.account.GetCurrency()];
        (adjustment.kind == nxAdjustmentKind::Roll ? money.carry : money.cash) += adjusted.amount;
        holding.isFilled = true;
        if (_observer != nullptr) _observer->OnAdjustment(holding.job, product, adjustment);
        _Value(holding, product, adjustment.GetPrice(holding.mark));
        jobs.push_back({holding.job, adjusted});
    }
    return jobs;
}

void nxLedger::_ValueFilled()
{
    for (const auto& [job, product] : std::exchange(_filled, {})) {
        Holding& holding = _Get(job, product);
        _Value(holding, product, holding.account.GetMark(_products[product].market->GetPrice()));
    }
}

void nxLedger::Mark(unsigned int product, const nxFeedBar* bar)
{
    std::vector<Holding>& holdings = _products[product].holdings;
    if (holdings.empty()) return;
    // Before its close is one of those that the profit can fall from.
    if (bar != nullptr)
        for (const Holding& holding : holdings)
            _MeetBar(holding, product, *bar);
    Settle();
    for (Holding& holding : holdings)
        if (holding.account.GetKeeper().GetNet() != 0)
            _Value(holding, product, holding.account.GetMark(_products[product].market->GetPrice()));
}

// What is long was worth least at the bar's low, what is short at its high.
void nxLedger::_MeetBar(const Holding& holding, unsigned int product, const nxFeedBar& bar)
{
    const nxPositionKeeper& keeper = holding.account.GetKeeper();
    if (keeper.GetNet() == 0) return;
    nxTradingStatistics::Money& money = _jobs[holding.job][holding.account.GetCurrency()];
    const nxExactAmount worst = keeper.GetTotalProfit(keeper.GetNet() > 0 ? bar.low : bar.high);
    money.hasBars = true;
    TakeLargest(money.worstDrawdown, money.best - (money.profit - holding.profit + worst));
    if (_observer != nullptr) _observer->OnBar(holding.job, product, bar);
}

// The sums of a currency change by what one of its products does.
void nxLedger::_Value(Holding& holding, unsigned int product, const nxDecimal& mark)
{
    if (mark == holding.mark && !holding.isFilled) return;
    const nxPositionKeeper& keeper = holding.account.GetKeeper();
    nxTradingStatistics::Money& money = _jobs[holding.job][holding.account.GetCurrency()];
    const nxExactAmount others = money.profit - holding.profit;
    holding.mark = mark;
    holding.isFilled = false;
    holding.profit = keeper.GetTotalProfit(mark);
    money.profit = others + holding.profit;
    const nxExactAmount fallen = money.best - money.profit;
    if (fallen.IsNegative()) {
        money.best = money.profit;
    } else {
        TakeLargest(money.drawdown, fallen);
        TakeLargest(money.worstDrawdown, fallen);
    }
    if (_observer != nullptr) _observer->OnValue(holding.job, product, keeper, mark, money);
}
