#include "host/synthetic/nxMarketGenerator.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "base/time/nxTime.h"
#include "base/values/nxInt128.h"
#include "host/feed/nxFeedTime.h"

namespace {

// Rates in hundredths per minute, by the distance in ticks from the opposite best price, beginning with 1. Up
// to 5 they are the published estimates; limit orders go on by the power law published with them, 1.92 /
// distance^0.52, and cancellations with the last estimate.
constexpr std::array<unsigned int, 10> LimitRates{185, 151, 109, 88, 77, 76, 70, 65, 61, 58};
constexpr std::array<unsigned int, 5> CancelRates{71, 81, 68, 56, 47};  // of each resting order
constexpr unsigned int MarketRate = 94;

constexpr nxUInt128 NanosecondHundredthsPerMinute = 6'000'000'000'000;
using nxTime::NanosecondsPerSecond;
constexpr std::size_t FlushSize = 64 * 1024;
constexpr unsigned int LongestDuration = 366 * static_cast<unsigned int>(nxTime::SecondsPerDay);
constexpr long long LeastPrice = 20;                   // in ticks; the opening book reaches 10 down
constexpr long long LargestPrice = 1'000'000'000'000;  // in the tick size's last place
constexpr unsigned int LargestOrder = 1'000'000;
constexpr unsigned int LargestScale = 100'000;
constexpr unsigned long long LargestSize =
    1'000'000'000'000;  // the digits of a size, so that a row can be read again

unsigned int GetCancelRate(long long distance)
{
    return CancelRates[static_cast<std::size_t>(std::min<long long>(distance, CancelRates.size()) - 1)];
}

constexpr unsigned long long GetLimitRate()
{
    unsigned long long sum = 0;
    for (const unsigned int rate : LimitRates)
        sum += rate;
    return sum;
}

}  // namespace

nxMarketGenerator::nxMarketGenerator(nxMarketGeneratorOptions options)
    : _options(std::move(options)), _random(_options.seed)
{
}

bool nxMarketGenerator::Generate(const Sink& sink, const Progress& progress)
{
    if (!Check()) return false;
    const auto flush = [&] {
        if (!sink(_text)) _failure = "the output cannot be written";
        _text.clear();
        return _failure.empty();
    };
    const long long begin = _options.start.GetAsTimeValue() * NanosecondsPerSecond;
    const long long end = begin + _options.durationSeconds * NanosecondsPerSecond;
    _text = nxFeedFormat::Get(_options.kind).GetHeader() + "\n";
    _time = begin;
    _OpenBook();
    for (;;) {
        _WriteChanges();
        const nxBySide<unsigned long long> cancels{_GetCancelRate(nxSide::Buy), _GetCancelRate(nxSide::Sell)};
        const unsigned long long rate = 2 * (GetLimitRate() + MarketRate) + cancels.buy + cancels.sell;
        _time += _GetWait(rate);
        if (_time >= end) break;
        _Step(_random.GetBelow(rate), cancels);
        if (_text.size() < FlushSize) continue;
        if (progress) progress(static_cast<unsigned int>((_time - begin) / NanosecondsPerSecond));
        if (!flush()) return false;
    }
    if (progress) progress(_options.durationSeconds);
    _statistics.resting = _book.GetVolume(nxSide::Buy) + _book.GetVolume(nxSide::Sell);
    return flush();
}

bool nxMarketGenerator::Check()
{
    const auto isPositive = [](const nxDecimal& number) { return number > nxDecimalZero; };
    if (_options.kind == nxFeedKind::Bar)
        _failure = "bars cannot be generated; quotes and depth can";
    else if (_options.product.empty() || _options.product.find_first_of(",\"\r\n") != std::string::npos)
        _failure = "the product's name is empty or holds a comma, a quote or a line end";
    else if (!_options.start.IsValid() || _options.start.GetAsTimeValue() < 0 ||
             _options.start.GetYear() > 2200)
        _failure = "the start lies outside 1970 to 2200";
    else if (_options.durationSeconds == 0 || _options.durationSeconds > LongestDuration)
        _failure = fmt::format("the duration must be between 1 and {} seconds", LongestDuration);
    else if (_options.rateScale == 0 || _options.rateScale > LargestScale)
        _failure = fmt::format("the rate scale must be between 1 and {}", LargestScale);
    else if (!isPositive(_options.tickSize) || !isPositive(_options.lotSize) ||
             !isPositive(_options.startPrice))
        _failure = "the tick size, the lot size and the start price must be above 0";
    else if (!_SetStartTicks())
        _failure = fmt::format(
            "the start price {} is no multiple of the tick size {} between {} ticks and {}",
            _options.startPrice.GetAsString(), _options.tickSize.GetAsString(), LeastPrice,
            nxDecimal::FromMantissa(LargestPrice, _options.tickSize.GetDecimalPlaces()).GetAsString());
    else if (_options.minLots == 0 || _options.maxLots < _options.minLots || _options.maxLots > LargestOrder)
        _failure =
            fmt::format("the lots of an order must be between 1 and {}, the least first", LargestOrder);
    else if (static_cast<unsigned long long>(_options.lotSize.GetMantissa()) > LargestSize / LargestOrder)
        _failure = "the lot size has too many digits";
    return _failure.empty();
}

// The start price in ticks. False: it is no whole number of them, or too few or too many.
bool nxMarketGenerator::_SetStartTicks()
{
    nxDecimal price = _options.startPrice;
    nxDecimal tick = _options.tickSize;
    price.Normalise(0);
    if (price.GetDecimalPlaces() > tick.GetDecimalPlaces()) tick.Normalise(price.GetDecimalPlaces());
    price.Normalise(tick.GetDecimalPlaces());
    if (price.GetDecimalPlaces() != tick.GetDecimalPlaces() || price.GetMantissa() > LargestPrice)
        return false;
    _startTicks = price.GetMantissa() / tick.GetMantissa();
    if (_startTicks < LeastPrice || price.GetMantissa() % tick.GetMantissa() != 0) return false;
    _options.tickSize = tick;
    return true;
}

// Each level with about the orders that it holds in the long run: as many as arrive in the mean life of one.
void nxMarketGenerator::_OpenBook()
{
    std::vector<nxSyntheticBook::Change> opening;
    for (const nxSide side : nxSides) {
        for (std::size_t i = 0; i < LimitRates.size(); ++i) {
            const auto distance = static_cast<long long>(i);
            const unsigned int leaving = GetCancelRate(distance + 1);
            for (unsigned int orders = std::max(1u, (LimitRates[i] + leaving / 2) / leaving); orders != 0;
                 --orders) {
                const unsigned int lots = _DrawLots();
                _book.Add(side, side == nxSide::Buy ? _startTicks - distance : _startTicks + 1 + distance,
                          lots, _changes);
                ++_statistics.limitOrders;
                _statistics.placed += lots;
            }
            opening.push_back(_changes.back());
        }
    }
    _changes = std::move(opening);
}

// Nanoseconds to the next arrival of a process with this rate, at least one.
long long nxMarketGenerator::_GetWait(unsigned long long rate)
{
    const nxUInt128 wait = _random.GetExponential() * NanosecondHundredthsPerMinute /
                               (static_cast<nxUInt128>(rate) * _options.rateScale) >>
                           32;
    return std::max(1LL, static_cast<long long>(wait));
}

unsigned long long nxMarketGenerator::_GetCancelRate(nxSide side) const
{
    unsigned long long sum = 0;
    const long long opposite = _book.GetBest(nxGetOpposite(side));
    for (const auto& [key, level] : _book.GetLevels(side))
        sum += GetCancelRate(key + nxGetSigned(side, opposite)) * level.orders.size();
    return sum;
}

// One arrival: `draw` lies within the sum of all rates and picks the process.
void nxMarketGenerator::_Step(unsigned long long draw, const nxBySide<unsigned long long>& cancels)
{
    for (const nxSide side : nxSides) {
        for (std::size_t i = 0; i < LimitRates.size(); ++i) {
            if (draw < LimitRates[i]) return _PlaceOrder(side, static_cast<long long>(i) + 1);
            draw -= LimitRates[i];
        }
        if (draw < MarketRate) {
            const unsigned long long traded = _book.Take(side, _DrawLots(), _changes);
            _statistics.marketOrders += traded != 0 ? 1 : 0;
            _statistics.traded += traded;
            return;
        }
        draw -= MarketRate;
        if (draw < cancels[side]) return _CancelOrder(side, draw);
        draw -= cancels[side];
    }
}

void nxMarketGenerator::_PlaceOrder(nxSide side, long long distance)
{
    const unsigned int lots = _DrawLots();
    const long long price = _book.GetBest(nxGetOpposite(side)) - nxGetSigned(side, distance);
    if (price < 1) return;
    _book.Add(side, price, lots, _changes);
    ++_statistics.limitOrders;
    _statistics.placed += lots;
}

void nxMarketGenerator::_CancelOrder(nxSide side, unsigned long long draw)
{
    const long long opposite = _book.GetBest(nxGetOpposite(side));
    for (const auto& [key, level] : _book.GetLevels(side)) {
        const unsigned int rate = GetCancelRate(key + nxGetSigned(side, opposite));
        if (draw < rate * level.orders.size()) {
            const unsigned int lots = _book.Cancel(side, -nxGetSigned(side, key), draw / rate, _changes);
            _statistics.cancellations += lots != 0 ? 1 : 0;
            _statistics.cancelled += lots;
            return;
        }
        draw -= rate * level.orders.size();
    }
}

unsigned int nxMarketGenerator::_DrawLots()
{
    return _options.minLots +
           static_cast<unsigned int>(_random.GetBelow(_options.maxLots - _options.minLots + 1));
}

void nxMarketGenerator::_WriteChanges()
{
    for (const nxSyntheticBook::Change& change : _changes) {
        _statistics.trades += change.traded != 0 ? 1 : 0;
        if (_options.kind == nxFeedKind::Depth) {
            _WritePrefix();
            _text += change.side == nxSide::Buy ? ",BUY," : ",SELL,";
            _WritePrice(change.price);
            _text += ',';
            _WriteSize(change.volume);
            _EndRow();
        } else if (change.traded != 0)
            _WriteTrade(change);
    }
    if (_options.kind == nxFeedKind::Quote) _WriteQuote();
    _changes.clear();
}

void nxMarketGenerator::_WriteTrade(const nxSyntheticBook::Change& change)
{
    _WritePrefix();
    _text += ",,,,,";
    _WritePrice(change.price);
    _text += ',';
    _WriteSize(change.traded);
    _text += change.side == nxSide::Buy ? ",SELL" : ",BUY";
    _EndRow();
}

void nxMarketGenerator::_WriteQuote()
{
    const auto isWritten = [this](nxSide side) {
        const Best& written = _written[side];
        return written.price == _book.GetBest(side) && written.volume == _book.GetBestVolume(side);
    };
    if (isWritten(nxSide::Buy) && isWritten(nxSide::Sell)) return;
    _WritePrefix();
    for (const nxSide side : nxSides) {
        Best& written = _written[side];
        const Best now{_book.GetBest(side), _book.GetBestVolume(side)};
        _text += ',';
        if (now.price != written.price) _WritePrice(now.price);
        _text += ',';
        // A new price says nothing of its volume, so both cells are given then.
        if (now.volume != written.volume || now.price != written.price) _WriteSize(now.volume);
        written = now;
    }
    _text += ",,,";
    _EndRow();
}

void nxMarketGenerator::_WritePrefix()
{
    fmt::format_to(std::back_inserter(_text), "{},{}", nxFeedTime::GetAsFileText(_time), _options.product);
}

void nxMarketGenerator::_WritePrice(long long ticks)
{
    const nxDecimal& tick = _options.tickSize;
    _text += nxDecimal::FromMantissa(ticks * tick.GetMantissa(), tick.GetDecimalPlaces()).GetAsString();
}

void nxMarketGenerator::_WriteSize(unsigned long long lots)
{
    const nxDecimal& lot = _options.lotSize;
    _text += nxDecimal::FromMantissa(static_cast<long long>(lots) * lot.GetMantissa(), lot.GetDecimalPlaces())
                 .GetAsString();
}

void nxMarketGenerator::_EndRow()
{
    _text += '\n';
    ++_statistics.rows;
}
