#include "host/results/nxResultAccount.h"

#include <algorithm>

nxResultAccount::nxResultAccount(std::optional<unsigned int> job, const nxCurrencyEnum& currency,
                                 double capital)
{
    data.job = job;
    data.currency = currency;
    data.drawdowns = nxDrawdowns(capital);
}

nxExactAmount nxResultAccount::Add(const Fill& fill)
{
    ++data.fills;
    data.executedVolume += fill.volume;
    if (!fill.isWithOwn) {
        data.volume += fill.volume;
        if (fill.isMaker) data.makerVolume += fill.volume;
    }
    data.fees += fill.fee;
    const nxExactAmount money(fill.price, fill.volume, fill.pointValue);
    data.turnover += money;
    if (fill.decision.IsValid()) {
        const nxExactAmount over = money - nxExactAmount(fill.decision, fill.volume, fill.pointValue);
        fill.side == nxSide::Buy ? data.slippage += over : data.slippage -= over;
        data.slippageVolume += fill.volume;
    }
    return money;
}

void nxResultAccount::Move(const nxExactAmount& change, int opened, long long time)
{
    _exposure += change;
    if (opened > 0 && _openPositions++ == 0) _openSince = time;
    if (opened < 0 && _openPositions != 0 && --_openPositions == 0) data.openTime += time - _openSince;
}

nxEquityBucket nxResultAccount::See(const nxExactAmount& profit, long long time)
{
    data.profit = profit;
    data.drawdowns.See(time, profit);
    nxEquityBucket sample;
    sample.time = time;
    sample.low = sample.high = sample.close = profit.GetAsDouble();
    sample.drawdown = data.drawdowns.GetDepth().GetAsDouble();
    sample.exposure = _exposure.GetAsDouble();
    data.equity.Add(sample);
    return sample;
}

void nxResultAccount::Finish(long long last)
{
    if (_openPositions != 0) data.openTime += std::max(last, _openSince) - _openSince;
}

nxResultAccount* nxResultAccounts::Find(std::optional<unsigned int> job, const nxCurrencyEnum& currency) const
{
    for (const auto& known : job ? _single : _all)
        if (known->data.job == job && known->data.currency == currency) return known.get();
    return nullptr;
}

nxResultAccount& nxResultAccounts::Make(std::optional<unsigned int> job, const nxCurrencyEnum& currency,
                                        double capital)
{
    return *(job ? _single : _all).emplace_back(std::make_unique<nxResultAccount>(job, currency, capital));
}

void nxResultAccounts::_Sort()
{
    std::ranges::stable_sort(_single, {}, [](const auto& account) { return *account->data.job; });
}

std::vector<nxResultAccount*> nxResultAccounts::_GetShared() const
{
    std::vector<nxResultAccount*> shared;
    for (const auto& all : _all)
        if (std::ranges::count(_single, all.get(), &nxResultAccount::all) > 1) shared.push_back(all.get());
    return shared;
}

void nxResultAccounts::_SumUp(nxResultAccount& all) const
{
    for (const auto& account : _single)
        if (account->all == &all) all.data.Add(account->data);
    all.data.trips.SortByExit();
}

std::vector<nxResultData> nxResultAccounts::_Take()
{
    std::vector<nxResultData> results;
    for (List* accounts : {&_single, &_all})
        for (auto& account : *accounts)
            if (account->data.orders != 0) results.push_back(std::move(account->data));
    return results;
}
