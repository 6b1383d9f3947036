#include "indicators/nxIndicatorCatalogue.h"

#include <gmock/gmock.h>

#include <cmath>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include "base/values/nxStringHelper.h"
#include "tests/support/nxRowFile.h"

namespace {

using Values = nxTechnicalIndicator::Values;
using Parameters = nxIndicatorCatalogue::Parameters;

std::vector<std::string> Split(const std::string& text, char separator)
{
    std::vector<std::string> parts(1);
    for (const char c : text)
        c == separator ? (void)parts.emplace_back() : parts.back().push_back(c);
    return parts;
}

std::vector<std::vector<std::string>> ReadTable(const std::string& name)
{
    std::ifstream file(std::string(NX_TEST_DIR) + "/data/indicators/" + name);
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(file, line);)
        rows.push_back(Split(line, ','));
    return rows;
}

struct Bars
{
    Values open, high, low, close, volume;

    void Add(double o, double h, double l, double c, double v)
    {
        open.push_back(o), high.push_back(h), low.push_back(l), close.push_back(c), volume.push_back(v);
    }
    void Resize(std::size_t size)
    {
        for (Values* values : {&open, &high, &low, &close, &volume})
            values->resize(size);
    }
    unsigned int GetCount() const { return static_cast<unsigned int>(close.size()); }
    void Calculate(nxTechnicalIndicator& indicator, unsigned int count) const
    {
        indicator.CalculateNewResult(open, high, low, close, volume, count);
    }
    void CalculateRealTime(nxTechnicalIndicator& indicator) const
    {
        indicator.CalculateRealTime(open, high, low, close, volume);
    }
};

Bars ReadBars()
{
    Bars bars;
    for (const auto& row : ReadTable("bars.csv")) {
        if (row[0] != "open") bars.Add(stod(row[0]), stod(row[1]), stod(row[2]), stod(row[3]), stod(row[4]));
    }
    return bars;
}

// An indicator by "TYPE name=value name=value", or the reason why there is none.
std::unique_ptr<nxTechnicalIndicator> Create(const std::string& text, std::string& error)
{
    const auto words = nxGetWords(text);
    Parameters parameters{{"name", "x"}, {"type", words[0]}};
    for (std::size_t i = 1; i < words.size(); ++i)
        parameters[words[i].substr(0, words[i].find('='))] = words[i].substr(words[i].find('=') + 1);
    return nxIndicatorCatalogue::Create(words[0], parameters, error);
}

std::unique_ptr<nxTechnicalIndicator> Create(const std::string& text)
{
    std::string error;
    auto indicator = Create(text, error);
    EXPECT_TRUE(indicator) << text << ": " << error;
    return indicator;
}

std::string GetError(const std::string& text)
{
    std::string error;
    EXPECT_FALSE(Create(text, error)) << text;
    return error;
}

// The value is read only here, so a call that sets it may stand beside it.
std::string Print(bool hasResult, const double& value)
{
    return hasResult ? nxStringHelper::GetAsString(value) + " " : "- ";
}

// Every result of an indicator, newest first; no result is written as "-".
std::string Print(const nxTechnicalIndicator& indicator, unsigned int count)
{
    std::string text;
    double value = 0;
    for (const std::string& name : indicator.GetResultNames())
        for (unsigned int i = 0; i < count; ++i)
            text += Print(indicator.GetNamedResult(i, name, value), value);
    return text;
}

std::string PrintRealTime(const nxTechnicalIndicator& indicator)
{
    std::string text;
    double value = 0;
    for (const std::string& name : indicator.GetResultNames())
        text += Print(indicator.GetRealTimeResult(name, value), value);
    return text;
}

// One indicator of each type, with short periods so that all of them are warm after few bars.
std::vector<std::string> GetOneOfEach()
{
    std::vector<std::string> all;
    for (const nxIndicatorType& type : nxIndicatorCatalogue::GetTypes()) {
        std::string& text = all.emplace_back(type.name);
        int count = 2;
        for (const nxIndicatorParameter& parameter : type.parameters) {
            if (parameter.kind != nxIndicatorParameter::Kind::Count) continue;
            text += std::string(" ") + parameter.name + "=" + std::to_string(count++);
        }
    }
    return all;
}

TEST(nxIndicatorCatalogue, AgreesWithOtherImplementations)
{
    const Bars bars = ReadBars();
    const auto table = ReadTable("expected.csv");
    ASSERT_GT(table.size(), 50u);
    std::set<std::string> types;
    for (std::size_t column = 1; column < table[0].size(); ++column) {
        const auto parts = Split(table[0][column], ':');
        types.insert(Split(parts[0], ' ')[0]);
        const auto indicator = Create(parts[0]);
        ASSERT_TRUE(indicator);
        bars.Calculate(*indicator, bars.GetCount());
        for (std::size_t row = 1; row < table.size(); ++row) {
            const auto bar = static_cast<unsigned int>(stoul(table[row][0]));
            const std::string trace = table[0][column] + " bar " + table[row][0];
            double value = 0;
            const bool hasResult = indicator->GetNamedResult(bars.GetCount() - 1 - bar, parts[1], value);
            const std::string& cell = table[row][column];
            ASSERT_EQ(hasResult, !cell.empty()) << trace;
            if (!hasResult) continue;
            ASSERT_NEAR(value, stod(cell), 1e-9 * std::max(1.0, std::abs(value))) << trace;
        }
    }
    EXPECT_EQ(types.size(), nxIndicatorCatalogue::GetTypes().size()) << "a type without expected values";
}

// The real-time bar gives what it will give when it is completed, however often it changed before and
// whatever it was then; and the completed results are those of an indicator that never saw a real-time bar,
// fed at once or bar by bar.
TEST(nxIndicatorCatalogue, RealTimeBarForetellsAndDisturbsNothing)
{
    const Bars all = ReadBars();
    for (const std::string& text : GetOneOfEach()) {
        const auto quiet = Create(text);
        const auto late = Create(text);
        const auto live = Create(text);
        Bars bars;
        for (unsigned int i = 0; i < 120; ++i) {
            // Bars far outside of the range and the bar as it will be, in turn; every third bar is added
            // uncalculated.
            for (const double factor : {2.0, 0.5, 1.0}) {
                bars.Resize(i);
                bars.Add(all.open[i], all.high[i] * factor, all.low[i] * factor, all.close[i] * factor,
                         all.volume[i] * factor);
                bars.CalculateRealTime(*live);
            }
            const std::string foretold = PrintRealTime(*live);
            bars.Calculate(*quiet, i + 1);
            if (i % 3 == 0) continue;
            bars.Calculate(*live, i + 1);
            std::string newest;
            double value = 0;
            for (const std::string& name : live->GetResultNames())
                newest += Print(name != "lagging" && live->GetNamedResult(0, name, value), value);
            ASSERT_EQ(foretold, newest) << text << " bar " << i;
        }
        bars.Calculate(*late, 120);
        EXPECT_EQ(Print(*live, 121), Print(*quiet, 121)) << text;
        EXPECT_EQ(Print(*late, 121), Print(*quiet, 121)) << text;
        EXPECT_NE(Print(*late, 1).find_first_of("0123456789"), std::string::npos) << text << " is never warm";
        live->ClearRealTimeResult();
        EXPECT_EQ(PrintRealTime(*live).find_first_of("0123456789"), std::string::npos) << text;
    }
}

TEST(nxIndicatorCatalogue, FewerBarsAreAnotherHistory)
{
    const Bars bars = ReadBars();
    Bars other;
    for (unsigned int i = 99; i > 39; --i) {
        other.Add(bars.open[i], bars.high[i], bars.low[i], bars.close[i], bars.volume[i]);
    }
    for (const std::string& text : GetOneOfEach()) {
        const auto again = Create(text);
        const auto once = Create(text);
        bars.Calculate(*again, 200);
        other.Calculate(*again, 60);
        other.Calculate(*once, 60);
        EXPECT_EQ(Print(*again, 201), Print(*once, 201)) << text;
    }
}

TEST(nxIndicatorCatalogue, BarThatIsNotFiniteIsPassedOver)
{
    const Bars bars = ReadBars();
    Bars holed;
    for (unsigned int i = 0; i < 60; ++i) {
        if (i == 30) holed.Add(1, NAN, 1, 1, 1);
        if (i == 31) holed.Add(1, 1, 1, 1, INFINITY);
        holed.Add(bars.open[i], bars.high[i], bars.low[i], bars.close[i], bars.volume[i]);
    }
    for (const std::string& text : GetOneOfEach()) {
        const auto indicator = Create(text);
        const auto whole = Create(text);
        holed.Calculate(*indicator, 62);
        bars.Calculate(*whole, 60);
        double value = 0;
        for (const std::string& name : whole->GetResultNames()) {
            EXPECT_EQ(indicator->GetNamedResult(31, name, value), name == "lagging") << text;
        }
        EXPECT_EQ(Print(*indicator, 20), Print(*whole, 20)) << text;
    }
}

// Where nothing moves or nothing is traded.
TEST(nxIndicatorCatalogue, StandsStillWithTheMarket)
{
    Bars flat;
    for (int i = 0; i < 100; ++i)
        flat.Add(0.1, 0.1, 0.1, 0.1, 0);
    nxExpectRows("indicators/rows.txt", [&](const std::string& text) {
        const auto indicator = Create(text);
        flat.Calculate(*indicator, 100);
        return Print(*indicator, 1);
    });
}

// What differs by its rounding alone has not moved: the same typical price of other prices, the RSI of a
// market that came to rest.
TEST(nxIndicatorCatalogue, RoundingIsNoMovement)
{
    Bars bars;
    for (int i = 0; i < 40; ++i)
        bars.Add(10, i % 2 ? 10.21 : 10.51, 9, i % 2 ? 10.1 : 9.8, 100 + i);
    const auto flow = Create("MFI");
    bars.Calculate(*flow, bars.GetCount());
    EXPECT_EQ(Print(*flow, 1), "50 ");
    for (int i = 0; i < 40; ++i)
        bars.Add(10, 10.2, 9, 10.1, 100);
    const auto place = Create("STOCHRSI");
    bars.Calculate(*place, bars.GetCount());
    EXPECT_EQ(Print(*place, 1), "50 50 ");
}

TEST(nxIndicatorCatalogue, AMarketAtRestIsFollowedAtTheFastPace)
{
    Bars bars;
    for (const double price : {1, 2, 3, 3, 3})
        bars.Add(price, price, price, price, 1);
    const auto average = Create("KAMA period=2");
    bars.Calculate(*average, 5);
    double value = 0;
    ASSERT_TRUE(average->GetNamedResult(0, "value", value));
    EXPECT_NEAR(value, 3 - std::pow(5.0 / 9, 3), 1e-12);  // a weight of (2 / 3)^2, three times
}

// A million bars around a level of a million with small changes, against the window computed anew.
TEST(nxIndicatorCatalogue, DoesNotDrift)
{
    constexpr unsigned int count = 1000000;
    constexpr std::size_t period = 50;
    std::mt19937 random(7);
    Bars bars;
    for (unsigned int i = 0; i < count; ++i) {
        const auto next = [&random](unsigned int limit) { return static_cast<double>(random() % limit); };
        const double low = 1e6 + 0.01 * next(100);
        bars.Add(low + 0.5, low + 2, low, low + 0.01 * next(200), 1 + next(1000));
    }
    const auto over = [&](auto term) {
        long double sum = 0;
        for (std::size_t i = count - period; i < count; ++i)
            sum += term(i);
        return sum;
    };
    const auto close = [&](std::size_t i) { return static_cast<long double>(bars.close[i]); };
    const auto age = [&](std::size_t i) { return static_cast<long double>(i - (count - period)); };
    const long double mean = over(close) / period;
    const long double deviation =
        std::sqrt(over([&](std::size_t i) { return (close(i) - mean) * (close(i) - mean); }) / period);
    const long double slope =
        over([&](std::size_t i) { return (close(i) - mean) * (age(i) - (period - 1) / 2.0L); }) /
        over([&](std::size_t i) { return (age(i) - (period - 1) / 2.0L) * (age(i) - (period - 1) / 2.0L); });
    const auto volume = [&](std::size_t i) { return static_cast<long double>(bars.volume[i]); };
    long double amount = 0;
    long double traded = 0;
    long double balance = 0;
    for (std::size_t i = 0; i < count; ++i) {
        amount += close(i) * volume(i);
        traded += volume(i);
        if (i > 0 && bars.close[i] != bars.close[i - 1])
            balance += bars.close[i] > bars.close[i - 1] ? volume(i) : -volume(i);
    }
    const struct
    {
        const char* indicator;
        const char* line;
        long double expected;
        double relativeError;
    } rows[] = {
        {"SMA period=50", "value", mean, 1e-15},
        {"WMA period=50", "value",
         over([&](std::size_t i) { return close(i) * (age(i) + 1); }) / (period * (period + 1) / 2), 1e-15},
        {"VWMA period=50", "value", over([&](std::size_t i) { return close(i) * volume(i); }) / over(volume),
         1e-15},
        {"STDDEV period=50", "value", deviation, 1e-10},
        {"BOLLINGER period=50", "upper", mean + 2 * deviation, 1e-15},
        {"LINREG_SLOPE period=50", "value", slope, 1e-8},
        {"VWAP source=close", "value", amount / traded, 1e-15},
        {"OBV", "value", balance, 0},
    };
    for (const auto& row : rows) {
        const auto indicator = Create(row.indicator);
        bars.Calculate(*indicator, count);
        double value = 0;
        ASSERT_TRUE(indicator->GetNamedResult(0, row.line, value)) << row.indicator;
        EXPECT_NEAR(value, static_cast<double>(row.expected),
                    row.relativeError * std::abs(static_cast<double>(row.expected)))
            << row.indicator << " is off by " << static_cast<double>((value - row.expected) / row.expected);
    }
}

TEST(nxIndicatorCatalogue, RefusesWhatMakesNoSense)
{
    nxExpectRows("indicators/rows.txt", GetError);
    EXPECT_THAT(GetError("sma"), testing::StartsWith("unknown type sma, known are SMA, EMA, WMA, "));
    EXPECT_TRUE(Create("PSAR acceleration=0.2"));
    double value = 0;
    EXPECT_FALSE(Create("SMA")->GetNamedResult(0, "value", value));
}

// The row of each type in the documentation tells its parameters, defaults and lines.
TEST(nxIndicatorCatalogue, IsDocumented)
{
    std::ifstream file(std::string(NX_SOURCE_DIR) + "/docs/indicators.md");
    std::ostringstream text;
    text << file.rdbuf();
    for (const nxIndicatorType& type : nxIndicatorCatalogue::GetTypes()) {
        std::string row = std::string("\n| `") + type.name + "` | ";
        for (const nxIndicatorParameter& parameter : type.parameters) {
            row += std::string("`") + parameter.name + "` " + parameter.defaultValue +
                   (&parameter == &type.parameters.back() ? "" : ", ");
        }
        row += " | ";
        for (const nxIndicatorLine& line : type.lines) {
            row += std::string("`") + line.name + (&line == &type.lines.back() ? "` | " : "`, ");
        }
        EXPECT_THAT(text.str(), testing::HasSubstr(row));
    }
    std::size_t documented = 0;
    for (const std::string& line : Split(text.str(), '\n'))
        documented += line.starts_with("| `");
    EXPECT_EQ(documented, nxIndicatorCatalogue::GetTypes().size());
}

}  // namespace
