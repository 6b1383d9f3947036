#include "host/run/nxTradingRecord.h"

#include <fmt/format.h>

#include <limits>

#include "host/exchange/nxExchangeEvent.h"
#include "host/jobs/nxLaunchedJob.h"

namespace {

// Not a number, which the record shows as null, for what is not known.
double Number(const nxDecimal& number)
{
    return number.GetAsDouble();
}

// As exact as the file of products.
std::string GetText(const nxDecimal& fee)
{
    return fee.IsValid() ? fee.GetAsString() : "0";
}

double Number(const nxExactAmount& amount)
{
    return amount.GetAsDecimal().GetAsDouble();
}

}  // namespace

void nxTradingRecord::WriteProduct(const nxMarket& market, const nxVenue::Product& product, long long time)
{
    if (!_output.IsRecording()) return;
    if (!_hasTerms) _WriteExchange(time);
    const nxProductDescription& terms = market.description;
    const double period = static_cast<double>(product.barPeriod) / nxTime::NanosecondsPerSecond;
    _output.RecordAt(time, "", "product",
                     {{"product", market.product.GetName()},
                      {"tickSize", Number(market.tickSize)},
                      {"lotSize", Number(terms.lotSize)},
                      {"pointValue", Number(terms.pointValue)},
                      {"currency", terms.currency.IsUndefined() ? "" : terms.currency.GetAsString()},
                      {"makerFee", Number(terms.makerFee)},
                      {"takerFee", Number(terms.takerFee)},
                      {"feeIsRate", terms.feeIsRate},
                      {"strategy", market.product.IsStrategy()},
                      {"bars", product.isOfBars},
                      {"barPeriod", period > 0 ? period : std::numeric_limits<double>::quiet_NaN()}});
    _WriteFees(market, time);
}

void nxTradingRecord::_WriteFees(const nxMarket& market, long long time)
{
    const nxProductDescription& terms = market.description;
    if (!terms.minimumFee.IsValid() && terms.feeTiers.empty()) return;
    std::string tiers;
    for (const nxFeeTier& tier : terms.feeTiers)
        tiers += (tiers.empty() ? "" : ", ") + std::to_string(tier.from) + " " + GetText(tier.makerFee) +
                 " " + GetText(tier.takerFee);
    _output.RecordAt(time, "", "fees",
                     {{"product", market.product.GetName()},
                      {"minimumFee", Number(terms.minimumFee)},
                      {"tierPeriod", terms.feeTiersByMonth ? "month" : "run"},
                      {"tiers", tiers}});
}

void nxTradingRecord::_WriteExchange(long long time)
{
    _hasTerms = true;
    const nxExchangeOptions& exchange = _state.options.exchange;
    const double participation = exchange.participation;
    _output.RecordAt(
        time, "", "exchange",
        {{"fills", exchange.fills->name},
         {"queueModel", exchange.queue.model->name},
         {"selfTrade", nxSelfTradeRule::Get(exchange.selfTrade).name},
         {"beyond", exchange.walksBeyond ? "walk" : "wait"},
         {"lateTrades", static_cast<double>(exchange.lateTrades) / nxTime::NanosecondsPerMillisecond},
         {"barFills", exchange.bars.model->name},
         {"barLimits", exchange.bars.isThrough ? "through" : "touch"},
         {"participation", participation > 0 ? participation : std::numeric_limits<double>::quiet_NaN()},
         {"barTime", _state.options.barsBearStart.value_or(false) ? "start" : "end"}});
}

void nxTradingRecord::OnEvent(const nxExchangeOrder& order, const nxExchangeEvent& event,
                              const nxMarketProduct& market)
{
    if (event.kind != nxExchangeEvent::Kind::Filled || !_output.IsRecording()) return;
    const nxProductAccount& account = _ledger.GetAccount(order.kind.owner, order.kind.product);
    const nxPositionKeeper& keeper = account.GetKeeper();
    const nxDecimal mark = account.GetMark(market.GetPrice());
    if (event.impact.IsValid())
        _output.RecordAt(event.time, _state.options.jobs[order.kind.owner].name, "impact",
                         {{"order", order.id}, {"ofLot", Number(event.impact)}});
    _output.RecordAt(
        event.time, _state.options.jobs[order.kind.owner].name, "fill",
        {{"order", order.id},
         {"product", market.GetName()},
         {"side", nxGetText(order.kind.side)},
         {"price", Number(event.fillPrice)},
         {"volume", event.fillVolume},
         {"maker", event.isMaker},
         {"cause", nxGetName(event.cause)},
         {"row", _state.statistics.GetRowEventCount()},
         {"mid", Number(_results.GetDecisionPrice(order.id))},
         {"pointValue", Number(account.GetPointValue())},
         {"fee", Number(_ledger.GetLastFee())},
         {"position", keeper.GetNet()},
         {"mark", keeper.GetNet() == 0 ? std::numeric_limits<double>::quiet_NaN() : Number(mark)},
         {"profit", Number(keeper.GetTotalProfit(mark))}});
}

void nxTradingRecord::WriteAdjustment(const nxAdjustment& adjustment)
{
    if (!_output.IsRecording()) return;
    const bool isSplit = adjustment.kind == nxAdjustmentKind::Split;
    _output.RecordAt(adjustment.time, "", "adjustment",
                     {{"product", adjustment.product},
                      {"kind", nxGetName(adjustment.kind)},
                      {"value", isSplit ? fmt::format("{}:{}", adjustment.newLots, adjustment.oldLots)
                                        : adjustment.value.GetAsString()},
                      {"row", _state.statistics.GetRowEventCount()}});
}

void nxTradingRecord::WriteCash(unsigned int job, const nxAdjustment& adjustment, const nxAdjusted& adjusted)
{
    if (!_output.IsRecording()) return;
    _output.RecordAt(adjustment.time, _state.options.jobs[job].name, "cash",
                     {{"product", adjustment.product},
                      {"row", _state.statistics.GetRowEventCount()},
                      {"amount", Number(adjusted.amount)},
                      {"position", adjusted.lots}});
}

void nxTradingRecord::WriteResult(nxRunOutput& output, const nxLaunchedJob& job,
                                  const nxTradingStatistics& trading, unsigned long long row)
{
    if (trading.orders == 0) return;
    output.Record(job, "result",
                  {{"row", row},
                   {"orders", trading.orders},
                   {"fills", trading.fills},
                   {"volume", trading.volume},
                   {"makerVolume", trading.makerVolume},
                   {"assumedVolume", trading.assumedVolume},
                   {"selfVolume", trading.selfVolume},
                   {"selfTrades", trading.selfTrades}});
    for (const nxTradingStatistics::Money& money : trading.money)
        output.Record(job, "money",
                      {{"currency", money.currency.IsUndefined() ? "" : money.currency.GetAsString()},
                       {"profit", Number(money.profit)},
                       {"realised", Number(money.profit - money.open)},
                       {"open", Number(money.open)},
                       {"fees", Number(money.fees)},
                       {"drawdown", Number(money.drawdown)},
                       {"worstDrawdown", money.hasBars ? Number(money.worstDrawdown)
                                                       : std::numeric_limits<double>::quiet_NaN()}});
}
