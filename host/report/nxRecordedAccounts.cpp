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

unsigned int GetVolume(const nxRecordLines& line)
{
    return static_cast<unsigned int>(
        std::min<unsigned long long>(line.GetCount("volume"), std::numeric_limits<unsigned int>::max()));
}

}  // namespace

nxResultAccount& nxRecordedAccounts::_GetAccount(std::optional<unsigned int> job, const std::string& currency)
{
    nxCurrencyEnum code;
    if (!currency.empty()) static_cast<void>(code.SetFromString(currency));
    if (nxResultAccount* const known = _accounts.Find(job, code)) return *known;
    nxResultAccount& made = _accounts.Make(job, code, _result.run.capital.value_or(0.0));
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
    nxResultAccount& account = _GetAccount(job, line.GetText("currency"));
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
        holding.lots.Add({GetSide(line), GetDecimal(line, "price"), GetVolume(line), line.GetAmount("fee"),
                          static_cast<unsigned int>(line.GetCount("order")), time, false},
                         [&](nxRoundTrip&& trip) { AddTrip(job, std::move(trip)); });
    }
    const double position = line.GetNumber("position");
    const bool isOpen = position != 0.0;
    nxDecimal pointValue;
    pointValue.SetFromDouble(_result.products[*product].pointValue, 10);
    const nxExactAmount exposure(mark, std::isfinite(position) ? std::llround(position) : 0, pointValue);
    const int opened = (isOpen ? 1 : 0) - (holding.isOpen ? 1 : 0);
    const nxExactAmount profit = line.GetAmount("profit");
    for (nxResultAccount* each : {holding.account, holding.account->all})
        each->Move(exposure - holding.exposure, opened, time);
    _See(*holding.account, profit - holding.profit, time);
    holding.exposure = exposure;
    holding.isOpen = isOpen;
    holding.profit = profit;
}

void nxRecordedAccounts::_AddMoney(const nxRecordLines& line, Holding& holding, unsigned int product)
{
    nxDecimal pointValue;
    pointValue.SetFromDouble(_result.products[product].pointValue, 10);
    holding.account->Add({GetSide(line), GetDecimal(line, "price"), GetVolume(line), line.GetAmount("fee"),
                          pointValue, line.GetBool("maker"), line.GetText("cause") == "ownOrder",
                          GetDecimal(line, "mid")});
}

void nxRecordedAccounts::_See(nxResultAccount& account, const nxExactAmount& profitChange, long long time)
{
    for (nxResultAccount* each : {&account, account.all})
        each->See(each->data.profit + profitChange, time);
}

// Days before a job's first order come with it, and may be known of other jobs.
void nxRecordedAccounts::_TakeDay(const nxRecordLines& line, unsigned int job, long long time)
{
    const auto begin = line.GetTime("day");
    if (!begin) return;
    const long long day = nxFeedTime::GetDay(*begin);
    const nxExactAmount profit = line.GetAmount("profit");
    nxResultAccount& account = _GetAccount(job, line.GetText("currency"));
    const bool isLatest = day == nxFeedTime::GetDay(nxTime::GetEarlier(time, 1)) || !profit.IsZero();
    if (isLatest) _See(account, profit - account.data.profit, time);
    for (nxResultAccount* each : {&account, account.all}) {
        std::vector<nxResultDay>& days = each->data.days;
        auto place = std::ranges::lower_bound(days, day, {}, &nxResultDay::day);
        if (place == days.end() || place->day != day) place = days.insert(place, {day, {}});
        place->profit += profit;
    }
}

void nxRecordedAccounts::AddTrip(unsigned int job, nxRoundTrip trip)
{
    // Of the marks between its fills nothing is known.
    if (_makesTrips) trip.hasExcursions = false;
    nxResultData& data = _GetHolding(job, trip.product).account->data;
    data.trips.Add(trip);
}

std::vector<nxResultData> nxRecordedAccounts::TakeResults(long long last)
{
    for (auto& [key, holding] : _holdings)
        holding.lots.Complete([&, job = key.first](nxRoundTrip&& trip) { AddTrip(job, std::move(trip)); });
    _accounts.ForEach([last](nxResultAccount& account) { account.Finish(last); });
    return _accounts.Take([](nxResultAccount&) {});
}
