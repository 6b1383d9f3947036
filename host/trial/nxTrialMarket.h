#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "host/feed/nxTimeText.h"
#include "host/run/nxRunArguments.h"
#include "host/trial/nxTrialSheet.h"

// The market that a test describes, as files that a run reads:
//
//     market { product = "SIM", tickSize = 0.25, pointValue = 50 }    the keys of a file of products
//     market {
//       "09:30:00 100.00 5 x 100.25 5",                 best bid and its volume, best ask and its volume
//       "09:30:01 trade 100.25 2 buy",                  price, volume and, where it is known, the side
//       "09:30:02 depth bid 100 5 | ask 100.25 3",      levels of the book; volume 0 removes one
//       "2024-01-09 09:35:00 FAR bar 100 101 99 100.5 1200",
//     }
//
// A date holds for the rows after it, too; a product is named where it is not the first one.
class nxTrialMarket
{
public:
    using Json = nlohmann::json;
    // What is wrong, in which line of the test file.
    struct Fault
    {
        unsigned int line;
        std::string text;
    };
    static constexpr const char* FirstDate = "2024-01-08";

    explicit nxTrialMarket(const nxTrialSheet& sheet) : _sheet(sheet) {}

    // What one call of market() took. Null, or what is wrong.
    [[nodiscard]] std::optional<Fault> Add(const Json& call);
    // Makes the files in the folder and names them for the run. False: they cannot be written.
    [[nodiscard]] bool Write(const std::string& folder, nxRunOptions& options,
                             nxRunArguments& arguments) const;

    bool HasRows() const;
    // That of the first row.
    const std::string& GetDate() const { return _firstDate; }
    // Whose place stands in a message of the run, about one of its files. None: it is about none of them.
    std::optional<Fault> Explain(const std::string& message) const;

private:
    struct File
    {
        const char* name;
        const char* header;
        std::string text = {};
        std::vector<unsigned int> lines = {};  // of the test file, by row
    };
    using Words = std::vector<std::string>;

    void _Describe(const Json& keys, unsigned int line);
    // Throws std::runtime_error with what is wrong with the row.
    void _AddRow(const std::string& row, unsigned int line);
    std::string _TakeTime(Words& words);
    std::string _TakeProduct(Words& words) const;
    void _AddQuote(const std::string& head, const Words& words, unsigned int line);
    void _AddTrade(const std::string& head, const Words& words, unsigned int line);
    void _AddBar(const std::string& head, const Words& words, unsigned int line);
    void _AddDepth(const std::string& head, const Words& words, unsigned int line);

    const nxTrialSheet& _sheet;
    std::vector<std::string> _products;
    std::vector<std::string> _barPeriods;
    std::string _date = FirstDate, _firstDate = FirstDate;
    std::optional<long long> _last;
    nxTimeText _times;
    File _quotes{"quotes.csv", "time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side\n"};
    File _depth{"depth.csv", "time,product,side,price,volume\n"};
    File _bars{"bars.csv", "time,product,open,high,low,close,volume\n"};
    File _descriptions{"products.toml", ""};
};
