// What values make of texts and numbers, as tests/data/base/values.txt tells it.

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>

#include "base/records/nxPrice.h"
#include "base/time/nxDateTime.h"
#include "base/values/nxExactAmount.h"
#include "base/values/nxPriceManipulator.h"
#include "base/values/nxStringHelper.h"
#include "base/values/nxStringParser.h"
#include "base/values/nxValueWrapper.h"
#include "tests/support/nxRowFile.h"

namespace {

const nxRoundingMethodEnum Nearest(nxRoundingMethod_Nearest);

// The arguments of a row, of which a missing one is empty; a blank is written as an underscore.
class Arguments
{
public:
    explicit Arguments(std::istringstream& row)
    {
        for (std::string word; row >> word;)
            _words.push_back(word.replace(0, word.starts_with('_'), word.starts_with('_') ? " " : ""));
        for (std::string& word : _words)
            if (word.ends_with('_')) word.back() = ' ';
    }
    std::string Text(std::size_t i) const { return i < _words.size() ? _words[i] : ""; }
    double Double(std::size_t i) const { return std::strtod(Text(i).c_str(), nullptr); }
    long long Whole(std::size_t i) const { return std::atoll(Text(i).c_str()); }
    int Int(std::size_t i) const { return static_cast<int>(Whole(i)); }
    unsigned char Places(std::size_t i) const { return static_cast<unsigned char>(Whole(i)); }
    nxDecimal Decimal(std::size_t i) const
    {
        nxDecimal value;
        EXPECT_EQ(value.SetFromString(Text(i)).IsSuccess(), Text(i) != "null") << Text(i);
        return value;
    }

private:
    std::vector<std::string> _words;
};

std::string Tell(const nxDecimal& value)
{
    return value.IsValid() ? value.GetAsString() : "null";
}

std::string Failed(const nxErrorEnum& error)
{
    return "failed " + std::to_string(error.GetValue());
}

// A failed reading leaves what was there.
template <class Number, class... Separator>
std::string Read(const std::string& text, Separator... separator)
{
    Number number = 42;
    const nxErrorEnum error = nxStringHelper::SetFromString(text, number, separator...);
    if (error.IsSuccess()) return nxStringHelper::GetAsString(number);
    EXPECT_EQ(number, 42) << text;
    return Failed(error);
}

// Of values that a failed reading makes null.
template <class Value, class Set>
std::string ReadOrNull(Value value, Set set)
{
    const nxErrorEnum error = set(value);
    if (error.IsSuccess()) return value.IsNoChange() ? "NO_CHANGE" : value.GetAsString();
    EXPECT_TRUE(value.IsNull());
    return Failed(error);
}

std::string Split(const std::string& text, bool filledOnly)
{
    std::deque<std::string> parts = {"left over"};
    nxStringParser::ExtractAllSubstrings(text, parts, filledOnly, ':');
    std::string all;
    for (const std::string& part : parts)
        all += "[" + part + "]";
    return all;
}

std::string Moment(const Arguments& a)
{
    try {
        return nxDateTime(a.Int(0), a.Int(1), a.Int(2), a.Int(3), 0, 0, 0).GetAsString();
    } catch (const std::invalid_argument&) {
        return "invalid";
    }
}

template <class Change>
std::string Changed(nxDecimal value, Change change)
{
    change(value);
    return Tell(value);
}

std::string Price(const nxPriceManipulator& manipulator, double number)
{
    nxDecimal price;
    price.SetFromDouble(number, 4);
    price.SetFromDouble(number, manipulator.NumberOfDecimalPlaces(price));
    manipulator.RoundToValidPrice(Nearest, price);
    return Tell(price);
}

// What gives up its last places, and then stays at the end of its range.
std::string Amount(const Arguments& a)
{
    nxExactAmount amount(a.Decimal(0), a.Whole(1), a.Decimal(2));
    amount *= a.Decimal(3);
    amount += nxExactAmount(a.Decimal(4), 1);
    nxDecimal shown = amount.GetAsDecimal();
    shown.Normalise(0);
    EXPECT_EQ(amount.IsNegative(), shown < nxDecimalZero);
    EXPECT_TRUE((amount - amount).IsZero());
    return shown.GetAsString();
}

std::string Best(const Arguments& a)
{
    const auto read = [&a](std::size_t i) {
        return a.Text(i) == "no-change" ? nxDecimal(nxNoChangeInitalizer()) : a.Decimal(i);
    };
    const auto volume = [&a](std::size_t i) { return nxVolume(static_cast<unsigned int>(a.Whole(i))); };
    nxPrice price;
    price.SetBidPrice(read(0));
    price.SetAskPrice(read(0));
    price.SetBidVolume(volume(1));
    price.SetAskVolume(volume(1));
    price.SetImpliedBidPrice(read(2));
    price.SetImpliedAskPrice(read(2));
    price.SetImpliedBidVolume(volume(3));
    price.SetImpliedAskVolume(volume(3));
    nxDecimal best = nxDecimalOne;
    nxVolume lots = 99;
    const auto tell = [&] { return Tell(best) + " " + (lots.IsValid() ? lots.GetAsString() : "null"); };
    price.GetBestBidPriceAndVolume(best, lots);
    const std::string bid = tell();
    price.GetBestAskPriceAndVolume(best, lots);
    return bid + " / " + tell();
}

using Operation = std::function<std::string(const Arguments&)>;

const std::map<std::string, Operation> Operations = {
    {"fraction", [](auto& a) { return Tell(nxDecimal(a.Whole(0), a.Whole(1), a.Places(2))); }},
    {"decimal",
     [](auto& a) { return ReadOrNull(nxDecimalOne, [&](auto& v) { return v.SetFromString(a.Text(0)); }); }},
    {"double",
     [](auto& a) {
         return Changed(nxDecimalOne, [&](auto& v) { v.SetFromDouble(a.Double(0), a.Places(1)); });
     }},
    {"round",
     [](auto& a) { return Changed(a.Decimal(0), [&](auto& v) { v.Round(a.Decimal(1), Nearest); }); }},
    {"normalise", [](auto& a) { return Changed(a.Decimal(0), [&](auto& v) { v.Normalise(a.Places(1)); }); }},
    {"price", [](auto& a) { return Price(nxPriceManipulator(a.Decimal(0)), a.Double(1)); }},
    {"write", [](auto& a) { return nxStringHelper::GetAsString(a.Double(0)); }},
    {"read", [](auto& a) { return Read<double>(a.Text(0), a.Text(1)[0]); }},
    {"integers",
     [](auto& a) {
         return Read<int>(a.Text(0)) + " " + Read<unsigned int>(a.Text(0)) + " " +
                Read<unsigned short>(a.Text(0));
     }},
    {"split", [](auto& a) { return Split(a.Text(0), false) + " - " + Split(a.Text(0), true); }},
    {"date",
     [](auto& a) {
         return ReadOrNull(nxDateTime(12345ll),
                           [&](auto& v) { return nxDateTime::SetFromString(a.Text(0), v); });
     }},
    {"amount", Amount},
    {"best", Best},
    {"moment", Moment},
    {"volume",
     [](auto& a) { return ReadOrNull(nxVolume(7), [&](auto& v) { return v.SetFromString(a.Text(0)); }); }},
};

TEST(nxValues, EveryRowComesToWhatItSays)
{
    for (const nxRow& row : nxReadRows("base/values.txt")) {
        std::istringstream words(row.what);
        std::string operation;
        words >> operation;
        EXPECT_EQ(nxTrim(Operations.at(operation)(Arguments(words))), row.outcome)
            << "line " << row.line << ": " << row.what;
    }
}

}  // namespace
