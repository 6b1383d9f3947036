#pragma once

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "host/feed/nxTimeText.h"
#include "host/trial/nxTrialFollower.h"
#include "host/trial/nxTrialSheet.h"

// What a test expects of its run, as its calls of expect() say:
//
//     expect { orders = 1, fills = 1, position = 1, profit = -0.25, log = "crossed",
//              globals = { count = 3 }, error = "attempt to index",
//              { "09:30:03", "buy 1 at 100.25", position = 0, log = "up", globals = { count = 2 } } }
//
// Text forms: buy and sell are orders, bought and sold fills.
class nxTrialExpectations
{
public:
    using Json = nlohmann::json;
    // What does not hold, in which line of the test file.
    struct Fault
    {
        unsigned int line;
        std::string expected, came;
    };

    // date: of times that name none. The sheet outlives it.
    nxTrialExpectations(const nxTrialSheet& sheet, std::string date) : _sheet(sheet), _date(std::move(date))
    {
    }

    // What one call of expect() took. Null, or what makes no sense.
    [[nodiscard]] std::optional<Fault> Add(const Json& call);
    bool IsEmpty() const { return _items.empty(); }
    // The script is meant to fail.
    bool ExpectsFailure() const { return std::ranges::find(_items, "error", &Item::key) != _items.end(); }
    // For the run that is to come.
    std::vector<nxTrialFollower::Look> GetLooks() const;
    // After the run, whose profit that is.
    std::vector<Fault> Judge(const nxTrialFollower& run, double profit) const;

private:
    // One key, or one text of a time.
    struct Item
    {
        unsigned int line;
        std::string key;
        Json value;
        std::optional<std::pair<long long, long long>> time;  // from and to, both included
        std::string timeText = {};

        std::string Describe() const;
    };

    std::optional<std::string> _AddTime(const Json& item, unsigned int line);
    std::optional<std::string> _AddKeys(const Json& keys, unsigned int line, const Item& frame);
    std::string _Judge(const Item& item, const nxTrialFollower& run, double profit) const;

    const nxTrialSheet& _sheet;
    const std::string _date;
    std::vector<Item> _items;
};
