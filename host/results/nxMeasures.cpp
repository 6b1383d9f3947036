#include "host/results/nxMeasures.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>

namespace {

using Basis = nxMeasureBasis;
using Numbers = std::vector<double>;

constexpr double None = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t LeastDaysForTail = 20;    // one of them is 5 %
constexpr std::size_t LeastDaysForGrowth = 30;  // a year's growth from fewer is a guess

double Divide(double part, double whole)
{
    return whole != 0.0 ? part / whole : None;
}

template <class Part, class Whole>
double Share(Part part, Whole whole)
{
    return Divide(static_cast<double>(part), static_cast<double>(whole));
}

double GetCapital(const Basis& b)
{
    return b.run.capital.value_or(None);
}

double GetCagr(const Basis& b)
{
    if (b.days.GetReturns().size() < LeastDaysForGrowth) return None;
    const double growth = b.days.GetEquity().back() / GetCapital(b);
    return std::pow(growth, b.daysPerYear / static_cast<double>(b.days.GetEquity().size())) - 1.0;
}

double GetSortino(const Basis& b)
{
    const Numbers& days = b.days.GetRatioBase();
    double squares = 0.0;
    for (const double day : days)
        if (day < 0.0) squares += day * day;
    if (days.size() < 2 || squares == 0.0) return None;
    const double downside = std::sqrt(squares / static_cast<double>(days.size()));
    return nxStatistics::GetMean(days) / downside * std::sqrt(b.daysPerYear);
}

double GetOmega(const Basis& b)
{
    double gains = 0.0, losses = 0.0;
    for (const double day : b.days.GetRatioBase())
        (day > 0.0 ? gains : losses) += std::abs(day);
    return Divide(gains, losses);
}

double GetStandardised(const Numbers& days, int power, std::size_t least)
{
    const double variance = nxStatistics::GetMoment(days, 2);
    if (days.size() < least || !(variance > 0.0)) return None;
    const double deviation = std::sqrt(variance);
    return nxStatistics::GetMoment(days, power) / (power == 3 ? variance * deviation : variance * variance);
}

// The worst of the days, as many as 5 % of them are, rounded up.
Numbers GetTail(const Basis& b)
{
    Numbers days = b.days.GetProfits();
    if (days.size() < LeastDaysForTail) return {};
    std::ranges::sort(days);
    days.resize((days.size() + 19) / 20);
    return days;
}

double GetValueAtRisk(const Basis& b)
{
    const Numbers tail = GetTail(b);
    return tail.empty() ? None : -tail.back();
}

double GetShortfall(const Basis& b)
{
    return -nxStatistics::GetMean(GetTail(b));
}

double GetDrawdownSeconds(const Basis& b)
{
    if (b.drawdowns.empty()) return None;
    const nxDrawdown& deepest = b.drawdowns.front();
    const long long end = deepest.to.value_or(std::max(b.run.last.value_or(0), deepest.trough));
    return static_cast<double>(end - deepest.from) / nxTime::NanosecondsPerSecond;
}

double GetRecoverySeconds(const Basis& b)
{
    if (b.drawdowns.empty() || !b.drawdowns.front().to) return None;
    return static_cast<double>(*b.drawdowns.front().to - b.drawdowns.front().trough) /
           nxTime::NanosecondsPerSecond;
}

double GetDrawdownShare(const Basis& b)
{
    return b.run.capital ? b.data.drawdowns.GetMostOfCapital() : None;
}

double GetUlcerIndex(const Basis& b)
{
    if (b.days.GetReturns().empty()) return None;
    double highest = GetCapital(b), squares = 0.0;
    for (const double equity : b.days.GetEquity()) {
        highest = std::max(highest, equity);
        squares += (1.0 - equity / highest) * (1.0 - equity / highest);
    }
    return std::sqrt(squares / static_cast<double>(b.days.GetEquity().size()));
}

double GetExposure(const Basis& b)
{
    if (!b.run.first) return None;
    return Share(b.data.openTime, *b.run.last - *b.run.first);
}

// Of the least squares of the result's days by the benchmark's.
struct Regression
{
    double alpha = None, beta = None;

    explicit Regression(const Basis& b)
    {
        const auto& [own, other] = b.days.GetPaired();
        if (own.size() < 10) return;
        const double ownMean = nxStatistics::GetMean(own), otherMean = nxStatistics::GetMean(other);
        double both = 0.0, squares = 0.0;
        for (std::size_t i = 0; i < own.size(); ++i) {
            both += (own[i] - ownMean) * (other[i] - otherMean);
            squares += (other[i] - otherMean) * (other[i] - otherMean);
        }
        beta = Divide(both, squares);
        alpha = (ownMean - beta * otherMean) * b.daysPerYear;
    }
};

double GetAverage(double sum, unsigned long long count)
{
    return Divide(sum, static_cast<double>(count));
}

double GetDayExtreme(const Basis& b, bool isBest)
{
    const Numbers& days = b.days.GetProfits();
    if (days.empty()) return None;
    return isBest ? *std::ranges::max_element(days) : *std::ranges::min_element(days);
}

// By the profit before fees, which has to be one.
double GetFeeShare(const Basis& b)
{
    const nxExactAmount before = b.data.profit + b.data.fees;
    return before.IsNegative() ? None : Divide(b.data.fees.GetAsDouble(), before.GetAsDouble());
}

template <std::size_t Horizon>
double GetMarkout(const Basis& b)
{
    const nxMarkout& markout = b.data.markouts[Horizon];
    return GetAverage(markout.sum.GetAsDouble(), markout.volume);
}

double IfAny(unsigned long long count, double value)
{
    return count != 0 ? value : None;
}

}  // namespace

const std::vector<nxMeasure>& nxMeasure::GetAll()
{
    // clang-format off
    static const std::vector<nxMeasure> all = {
        {"netProfit", "Net profit", "money", "higher", "return", "realised and open profit less fees, at the end",
         [](const Basis& b) { return b.data.profit.GetAsDouble(); }},
        {"grossProfit", "Gross profit", "money", "higher", "return", "sum of the profits of winning round trips",
         [](const Basis& b) { return b.trips.grossProfit.GetAsDouble(); }},
        {"grossLoss", "Gross loss", "money", "higher", "return", "sum of the profits of losing round trips, 0 or less",
         [](const Basis& b) { return b.trips.grossLoss.GetAsDouble(); }},
        {"return", "Return", "percent", "higher", "return", "net profit / capital",
         [](const Basis& b) { return b.data.profit.GetAsDouble() / GetCapital(b); }},
        {"cagr", "Growth a year (CAGR)", "percent", "higher", "return", "(last equity / capital)^(days per year / days) - 1", GetCagr},
        {"volatility", "Volatility a year", "percent", "lower", "risk", "standard deviation of daily returns * sqrt(days per year)",
         [](const Basis& b) { return nxStatistics::GetDeviation(b.days.GetReturns()) * std::sqrt(b.daysPerYear); }},
        {"sharpe", "Sharpe ratio", "ratio", "higher", "risk", "mean day / standard deviation of days * sqrt(days per year)",
         [](const Basis& b) { return nxDayStatistics::GetSharpe(b.days.GetRatioBase(), b.daysPerYear); }},
        {"sortino", "Sortino ratio", "ratio", "higher", "risk", "mean day / downside deviation of all days against 0 * sqrt(days per year)", GetSortino},
        {"calmar", "Calmar ratio", "ratio", "higher", "risk", "growth a year / largest drawdown in percent",
         [](const Basis& b) { return Divide(GetCagr(b), GetDrawdownShare(b)); }},
        {"omega", "Omega ratio", "ratio", "higher", "risk", "sum of the days above 0 / sum of the days below 0", GetOmega},
        {"skew", "Skewness of days", "ratio", "higher", "risk", "third central moment of days / second^1.5",
         [](const Basis& b) { return GetStandardised(b.days.GetRatioBase(), 3, 3); }},
        {"kurtosis", "Excess kurtosis of days", "ratio", "lower", "risk", "fourth central moment of days / second^2 - 3",
         [](const Basis& b) { return GetStandardised(b.days.GetRatioBase(), 4, 4) - 3.0; }},
        {"var95", "Value at risk, a day", "money", "lower", "risk", "loss of the best of the worst 5 % of days, their count rounded up", GetValueAtRisk},
        {"es95", "Expected shortfall, a day", "money", "lower", "risk", "mean loss of the worst 5 % of days, their count rounded up", GetShortfall},
        {"maxDrawdown", "Largest drawdown", "money", "lower", "risk", "farthest fall of the profit below its highest, looked at after each row",
         [](const Basis& b) { return b.drawdowns.empty() ? 0.0 : b.drawdowns.front().depth.GetAsDouble(); }},
        {"maxDrawdownPercent", "Largest drawdown in percent", "percent", "lower", "risk", "largest of all falls / (capital + profit that it fell from)", GetDrawdownShare},
        {"maxDrawdownSeconds", "Length of the largest drawdown", "seconds", "lower", "risk", "from its highest until that is reached again, or to the end", GetDrawdownSeconds},
        {"recoverySeconds", "Recovery from the largest drawdown", "seconds", "lower", "risk", "from its lowest until the highest is reached again", GetRecoverySeconds},
        {"ulcerIndex", "Ulcer index", "percent", "lower", "risk", "root of the mean square of (1 - equity / highest equity) at the ends of days", GetUlcerIndex},
        {"exposure", "Time in the market", "percent", "none", "activity", "time with a position / time of the data", GetExposure},
        {"turnover", "Turnover", "money", "none", "activity", "sum of price * volume * point value of all fills",
         [](const Basis& b) { return b.data.turnover.GetAsDouble(); }},
        {"turnoverPerYear", "Turnover a year", "ratio", "none", "activity", "turnover / capital * days per year / days",
         [](const Basis& b) { return GetAverage(b.data.turnover.GetAsDouble() / GetCapital(b) * b.daysPerYear, b.data.days.size()); }},
        {"roundTrips", "Round trips", "count", "none", "trips", "lots that one order opened and one order closed, counted as one",
         [](const Basis& b) { return static_cast<double>(b.trips.count); }},
        {"winRate", "Win rate", "percent", "higher", "trips", "round trips with a profit above 0 / round trips",
         [](const Basis& b) { return Share(b.trips.wins, b.trips.count); }},
        {"profitFactor", "Profit factor", "ratio", "higher", "trips", "gross profit / size of the gross loss",
         [](const Basis& b) { return Divide(b.trips.grossProfit.GetAsDouble(), -b.trips.grossLoss.GetAsDouble()); }},
        {"expectancy", "Expectancy", "money", "higher", "trips", "profit of all round trips / round trips",
         [](const Basis& b) { return GetAverage(b.trips.profit.GetAsDouble(), b.trips.count); }},
        {"payoff", "Payoff ratio", "ratio", "higher", "trips", "average win / size of the average loss",
         [](const Basis& b) { return Divide(GetAverage(b.trips.grossProfit.GetAsDouble(), b.trips.wins), GetAverage(-b.trips.grossLoss.GetAsDouble(), b.trips.losses)); }},
        {"averageWin", "Average win", "money", "higher", "trips", "gross profit / winning round trips",
         [](const Basis& b) { return GetAverage(b.trips.grossProfit.GetAsDouble(), b.trips.wins); }},
        {"averageLoss", "Average loss", "money", "higher", "trips", "gross loss / losing round trips",
         [](const Basis& b) { return GetAverage(b.trips.grossLoss.GetAsDouble(), b.trips.losses); }},
        {"largestWin", "Largest win", "money", "higher", "trips", "highest profit of a round trip",
         [](const Basis& b) { return IfAny(b.trips.wins, b.trips.largestWin.GetAsDouble()); }},
        {"largestLoss", "Largest loss", "money", "higher", "trips", "lowest profit of a round trip",
         [](const Basis& b) { return IfAny(b.trips.losses, b.trips.largestLoss.GetAsDouble()); }},
        {"averageHolding", "Average holding time", "seconds", "none", "trips", "mean of last exit - first entry",
         [](const Basis& b) { return GetAverage(b.trips.holding, b.trips.count); }},
        {"longestHolding", "Longest holding time", "seconds", "none", "trips", "largest of last exit - first entry",
         [](const Basis& b) { return IfAny(b.trips.count, b.trips.longestHolding); }},
        {"averageMae", "Average adverse excursion", "money", "lower", "trips", "mean of the farthest that the market went against a round trip's lots",
         [](const Basis& b) { return GetAverage(b.trips.mae.GetAsDouble(), b.trips.withExcursions); }},
        {"averageMfe", "Average favourable excursion", "money", "higher", "trips", "mean of the farthest that the market went for a round trip's lots",
         [](const Basis& b) { return GetAverage(b.trips.mfe.GetAsDouble(), b.trips.withExcursions); }},
        {"longestWinStreak", "Longest winning streak", "count", "higher", "trips", "most round trips in a row with a profit above 0",
         [](const Basis& b) { return static_cast<double>(b.trips.winStreak); }},
        {"longestLossStreak", "Longest losing streak", "count", "lower", "trips", "most round trips in a row with a profit below 0",
         [](const Basis& b) { return static_cast<double>(b.trips.lossStreak); }},
        {"bestDay", "Best day", "money", "higher", "return", "highest profit of a day", [](const Basis& b) { return GetDayExtreme(b, true); }},
        {"worstDay", "Worst day", "money", "higher", "return", "lowest profit of a day", [](const Basis& b) { return GetDayExtreme(b, false); }},
        {"meanDay", "Mean day", "money", "higher", "return", "mean of the profits of all days with data",
         [](const Basis& b) { return nxStatistics::GetMean(b.days.GetProfits()); }},
        {"longProfit", "Profit of long round trips", "money", "higher", "trips", "sum of the profits of round trips that began with a buy",
         [](const Basis& b) { return b.trips.longProfit.GetAsDouble(); }},
        {"shortProfit", "Profit of short round trips", "money", "higher", "trips", "sum of the profits of round trips that began with a sale",
         [](const Basis& b) { return b.trips.shortProfit.GetAsDouble(); }},
        {"fees", "Fees", "money", "lower", "costs", "fees of all fills less rebates", [](const Basis& b) { return b.data.fees.GetAsDouble(); }},
        {"feeShare", "Fee share", "percent", "lower", "costs", "fees / (net profit + fees)", GetFeeShare},
        {"makerShare", "Maker share", "percent", "none", "execution", "volume filled as a maker / volume",
         [](const Basis& b) { return Share(b.data.makerVolume, b.data.volume); }},
        {"fillRatio", "Fill ratio", "percent", "none", "execution", "volume filled / volume of all orders",
         [](const Basis& b) { return Share(b.data.executedVolume, b.data.orderedVolume); }},
        {"orderToTrade", "Order to trade ratio", "ratio", "lower", "execution", "new orders, amendments and pulls / fills",
         [](const Basis& b) { return Share(b.data.messages, b.data.fills); }},
        {"slippage", "Slippage", "money", "lower", "costs", "what fills cost beyond the mid when their order was sent, without fees",
         [](const Basis& b) { return IfAny(b.data.slippageVolume, b.data.slippage.GetAsDouble()); }},
        {"slippagePerLot", "Slippage a lot", "money", "lower", "costs", "slippage / volume of the fills that have one",
         [](const Basis& b) { return GetAverage(b.data.slippage.GetAsDouble(), b.data.slippageVolume); }},
        {"markout1s", "Markout after 1 s", "money", "higher", "execution", "what a lot is worth at the mid 1 s after its fill, less what it was filled at", GetMarkout<0>},
        {"markout10s", "Markout after 10 s", "money", "higher", "execution", "the same after 10 s", GetMarkout<1>},
        {"markout1m", "Markout after 1 min", "money", "higher", "execution", "the same after 1 min", GetMarkout<2>},
        {"markout10m", "Markout after 10 min", "money", "higher", "execution", "the same after 10 min", GetMarkout<3>},
        {"alpha", "Alpha a year", "percent", "higher", "return", "(mean return - beta * mean return of the benchmark) * days per year",
         [](const Basis& b) { return Regression(b).alpha; }},
        {"beta", "Beta", "ratio", "none", "risk", "covariance of daily returns with the benchmark's / variance of the benchmark's",
         [](const Basis& b) { return Regression(b).beta; }},
        {"averageWinHolding", "Average holding time of wins", "seconds", "none", "trips", "mean of last exit - first entry of winning round trips",
         [](const Basis& b) { return GetAverage(b.trips.winHolding, b.trips.wins); }},
        {"averageLossHolding", "Average holding time of losses", "seconds", "none", "trips", "the same of losing round trips",
         [](const Basis& b) { return GetAverage(b.trips.lossHolding, b.trips.losses); }},
    };
    // clang-format on
    return all;
}

const nxMeasure& nxMeasure::Get(const char* name)
{
    return *std::ranges::find_if(GetAll(),
                                 [name](const nxMeasure& row) { return std::strcmp(row.name, name) == 0; });
}
