#include "host/report/nxRecordedAccounts.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/feed/nxFeedTime.h"

namespace {

nxSide GetSide(const nxRecordLines& line)
{
    return line.GetText("side") == "SELL" ? nxSide::Sell : nxSide::Buy;
}

nxDecimal GetDecimal(const nxRecordLines& line, const char* key)
{
    return std::isfinite(line.GetNumber(key)) ? line.GetAmount(key).GetAsDecimal() : nxDecimal();
}

}  // namespace

nxRecordedAccounts::Account& nxRecordedAccounts::_GetAccount(std::optional<unsigned int> job,
                                                             const std::string& currency)
{
    nxCurrencyEnum code;
    if (!currency.empty()) static_cast<void>(code.SetFromString(currency));
    auto& accounts = job ? _accounts : _all;
    for (const auto& known : accounts)
        if (known->data.job == job && known->data.currency == code) return *known;
    Account& made = *accounts.emplace_back(std::make_unique<Account>());
    made.data.job = job;
    made.data.currency = code;
    made.data.drawdowns = nxDrawdowns(_result.run.capital.value_or(0.0));
    if (job) made.all = &_GetAccount(std::nullopt, currency);
    return made;
}

std::optional<unsigned int> nxRecordedAccounts::_FindProduct(const std::string& name) const
{
    const auto found = std::ranges::find(_result.products, name, &nxResultProduct::name);
    if (found == _result.products.end()) return std::nullopt;
    return static_cast<unsigned int>(found - _result.products.begin());
}

nxRecordedAccounts::Holding& nxRecordedAccounts::_GetHolding(unsigned int job, unsigned int number)
{
    const auto known = _holdings.find({job, number});
    if (known != _holdings.end()) return known->second;
    const nxResultProduct& product = _result.products[number];
    nxDecimal pointValue;
    pointValue.SetFromDouble(product.pointValue, 10);
    return _holdings
        .emplace(std::pair(job, number), Holding{&_GetAccount(job, product.currency),
                                                 nxLotBook(number, pointValue, nxMatching::Fifo),
                                                 {},
                                                 {},
                                                 false})
        .first->second;
}

void nxRecordedAccounts::Take(const nxRecordLines& line, unsigned int job, long long time)
{
    const std::string& type = line.GetText("type");
    if (type == "order") return _TakeRequest(line, job);
    if (type == "orderEvent") return _TakeEvent(line, job);
    if (type == "fill") return _TakeFill(line, job, time);
    if (type == "day") return _TakeDay(line, job, time);
    if (type != "equity" && type != "money") return;
    Account& account = _GetAccount(job, line.GetText("currency"));
    _See(account, line.GetAmount("profit") - account.data.profit, time);
}

void nxRecordedAccounts::_NoteVolume(unsigned int job, Order& order, unsigned long long volume)
{
    _GetHolding(job, order.product).account->data.orderedVolume += volume - order.volume;
    order.volume = volume;
}

void nxRecordedAccounts::_TakeRequest(const nxRecordLines& line, unsigned int job)
{
    const auto product = _FindProduct(line.GetText("product"));
    if (!product) return;
    nxResultData& data = _GetHolding(job, *product).account->data;
    ++data.messages;
    const std::string& request = line.GetText("request");
    if (request == "amend" || request == "pull") return;
    ++data.orders;
    Order& order = _orders[line.GetCount("order")];
    order.product = *product;
    _NoteVolume(job, order, line.GetCount("volume"));
}

void nxRecordedAccounts::_TakeEvent(const nxRecordLines& line, unsigned int job)
{
    const std::string& event = line.GetText("event");
    if (event != "childCreated" && event != "amended") return;
    const auto parent = _orders.find(line.GetCount(event == "amended" ? "order" : "parent"));
    if (parent == _orders.end()) return;
    const unsigned int product = parent->second.product;
    Order& order = _orders[line.GetCount("order")];
    order.product = product;
    if (event == "childCreated") ++_GetHolding(job, product).account->data.orders;
    _NoteVolume(job, order, line.GetCount("volume"));
}

void nxRecordedAccounts::_TakeFill(const nxRecordLines& line, unsigned int job, long long time)
{
    const auto product = _FindProduct(line.GetText("product"));
    if (!product) return;
    Holding& holding = _GetHolding(job, *product);
    _AddMoney(line, holding, *product);
    const nxDecimal mark = GetDecimal(line, "mark");
    if (_makesTrips) {
        holding.lots.Add(
            {GetSide(line), GetDecimal(line, "price"), static_cast<unsigned int>(line.GetCount("volume")),
             line.GetAmount("fee"), static_cast<unsigned int>(line.GetCount("order")), time, false},
            [&](nxRoundTrip&& trip) { AddTrip(job, std::move(trip)); });
    }
    const double position = line.GetNumber("position");
    const bool isOpen = position != 0.0;
    nxDecimal pointValue;
    pointValue.SetFromDouble(_result.products[*product].pointValue, 10);
    const nxExactAmount exposure(mark, std::isfinite(position) ? std::llround(position) : 0, pointValue);
    const int opened = (isOpen ? 1 : 0) - (holding.isOpen ? 1 : 0);
    const nxExactAmount profit = line.GetAmount("profit");
    for (Account* each : {holding.account, holding.account->all})
        _Move(*each, exposure - holding.exposure, opened, time);
    _See(*holding.account, profit - holding.profit, time);
    holding.exposure = exposure;
    holding.isOpen = isOpen;
    holding.profit = profit;
}

void nxRecordedAccounts::_AddMoney(const nxRecordLines& line, Holding& holding, unsigned int product)
{
    nxResultData& data = holding.account->data;
    const auto volume = static_cast<long long>(std::min(line.GetCount("volume"), 1ull << 32));
    const auto lots = static_cast<unsigned long long>(volume);
    nxDecimal pointValue;
    pointValue.SetFromDouble(_result.products[product].pointValue, 10);
    const nxExactAmount money(GetDecimal(line, "price"), volume, pointValue);
    ++data.fills;
    data.executedVolume += lots;
    data.fees += line.GetAmount("fee");
    data.turnover += money;
    if (line.GetText("cause") != "ownOrder") {
        data.volume += lots;
        if (line.GetBool("maker")) data.makerVolume += lots;
    }
    const nxDecimal mid = GetDecimal(line, "mid");
    if (!mid.IsValid()) return;
    const nxExactAmount over = money - nxExactAmount(mid, volume, pointValue);
    GetSide(line) == nxSide::Buy ? data.slippage += over : data.slippage -= over;
    data.slippageVolume += lots;
}

void nxRecordedAccounts::_Move(Account& account, const nxExactAmount& change, int opened, long long time)
{
    account.exposure += change;
    if (opened > 0 && account.openPositions++ == 0) account.openSince = time;
    if (opened < 0 && account.openPositions != 0 && --account.openPositions == 0)
        account.data.openTime += time - account.openSince;
}

void nxRecordedAccounts::_See(Account& account, const nxExactAmount& profitChange, long long time)
{
    for (Account* each : {&account, account.all}) {
        nxResultData& data = each->data;
        data.profit += profitChange;
        data.drawdowns.See(time, data.profit);
        nxEquityBucket sample;
        sample.time = time;
        sample.low = sample.high = sample.close = data.profit.GetAsDouble();
        sample.drawdown = data.drawdowns.GetDepth().GetAsDouble();
        sample.exposure = each->exposure.GetAsDouble();
        data.equity.Add(sample);
    }
}

// Days before a job's first order come with it, and may be known of other jobs.
void nxRecordedAccounts::_TakeDay(const nxRecordLines& line, unsigned int job, long long time)
{
    const auto begin = line.GetTime("day");
    if (!begin) return;
    const long long day = nxFeedTime::GetDay(*begin);
    const nxExactAmount profit = line.GetAmount("profit");
    Account& account = _GetAccount(job, line.GetText("currency"));
    const bool isLatest = day == nxFeedTime::GetDay(nxTime::GetEarlier(time, 1)) || !profit.IsZero();
    if (isLatest) _See(account, profit - account.data.profit, time);
    for (Account* each : {&account, account.all}) {
        std::vector<nxResultDay>& days = each->data.days;
        auto place = std::ranges::lower_bound(days, day, {}, &nxResultDay::day);
        if (place == days.end() || place->day != day) place = days.insert(place, {day, {}});
        place->profit += profit;
    }
}

void nxRecordedAccounts::AddTrip(unsigned int job, nxRoundTrip&& trip)
{
    // Of the marks between its fills nothing is known.
    if (_makesTrips) trip.hasExcursions = false;
    nxResultData& data = _GetHolding(job, trip.product).account->data;
    data.trips.push_back(std::move(trip));
}

void nxRecordedAccounts::_SumUp(Account& all) const
{
    for (const auto& account : _accounts)
        if (account->all == &all) all.data.Add(account->data);
    std::ranges::stable_sort(all.data.trips, {}, &nxRoundTrip::exitTime);
}

std::vector<nxResultData> nxRecordedAccounts::TakeResults(long long last)
{
    for (auto& [key, holding] : _holdings)
        holding.lots.Complete([&, job = key.first](nxRoundTrip&& trip) { AddTrip(job, std::move(trip)); });
    std::ranges::stable_sort(_accounts, {}, [](const auto& account) { return *account->data.job; });
    std::vector<nxResultData> results;
    for (const auto& all : _all)
        if (std::ranges::count(_accounts, all.get(), &Account::all) > 1) _SumUp(*all);
    for (auto* accounts : {&_accounts, &_all}) {
        for (auto& account : *accounts) {
            if (account->openPositions != 0) account->data.openTime += last - account->openSince;
            if (account->data.orders != 0) results.push_back(std::move(account->data));
        }
    }
    return results;
}
