#pragma once

#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/results/nxBuckets.h"
#include "host/results/nxResultData.h"

// What was run, and what it was like. Times are nanoseconds since 1970.
struct nxResultRun
{
    struct File
    {
        std::string job;  // of a script
        std::string path;
        std::optional<unsigned long long> rows;  // of data
        std::optional<std::string> sha256;       // none: it can be read only once
    };

    std::string program;
    std::vector<File> scripts, modules, data;
    std::vector<std::pair<std::string, std::string>> settings;
    unsigned long long seed = 1;
    std::optional<double> capital;
    std::optional<long long> first, last;  // of the data; none without rows
    std::string end;
    unsigned long long quotes = 0, trades = 0, depthChanges = 0, bars = 0;
    std::vector<long long> days;  // with data, since 1970
    bool isComplete = true;
    std::optional<std::string> hash;  // none: something can be read only once
    std::vector<std::string> missing, remarks, notes;

    // The factor that makes a year of a data day; not a number below two of them.
    double GetDaysPerYear() const
    {
        constexpr double year = 365.25;
        if (days.size() < 2) return std::numeric_limits<double>::quiet_NaN();
        return static_cast<double>(days.size() - 1) / static_cast<double>(days.back() - days.front()) * year;
    }
};

struct nxResultJob
{
    struct Callback
    {
        std::string name;
        unsigned long long count = 0;
        unsigned long long failures = 0;
    };

    std::string name, script, end;
    std::vector<std::pair<std::string, std::string>> parameters;
    std::vector<Callback> callbacks;
    std::map<std::string, std::string> outputs;
    std::vector<std::string> notes;
};

struct nxResultProduct
{
    struct Fill
    {
        long long time = 0;
        std::string job, side;
        double price = 0.0;
        unsigned int volume = 0;
        bool isMaker = false;
        unsigned int order = 0;
    };

    std::string name, currency;
    double pointValue = 1.0;
    double tickSize = std::numeric_limits<double>::quiet_NaN();
    nxBuckets<nxPriceBucket> prices;
    unsigned long long fillCount = 0;
    std::vector<Fill> fills;  // the first of them
};

struct nxResultOrder
{
    struct Event
    {
        long long time = 0;
        std::string name, text;
    };

    std::string job, product, side, type, status;
    unsigned int order = 0;
    double volume = 0.0, price = std::numeric_limits<double>::quiet_NaN();
    unsigned int executed = 0;
    nxExactAmount prices;  // times volumes of its fills
    nxExactAmount fees;
    nxExactAmount slippage;
    bool hasSlippage = false;
    long long sent = 0;
    std::optional<long long> end;
    std::vector<Event> events;
};

struct nxResultLine
{
    std::string job, chart, line;
    unsigned int colour = 0;
    nxBuckets<nxPriceBucket, 4096> values;  // two points each
};

struct nxResultLog
{
    long long time = 0;
    std::string job, level, text;
};

struct nxResultFailure
{
    std::string job, callback, text;
    unsigned long long count = 0;
    std::optional<long long> first;
    std::string file;  // empty: not known, as is the line
    unsigned int line = 0;
};

// One row of an envelope.
struct nxResultVariant
{
    std::string model, job, currency;
    unsigned long long orders = 0, fills = 0, volume = 0;
    double fees = 0.0, profit = 0.0, drawdown = 0.0;
};

// All that a run came to: what the result document tells.
struct nxResult
{
    nxResultRun run;
    std::vector<nxResultJob> jobs;
    std::vector<nxResultData> results;
    std::vector<nxResultProduct> products;  // by the exchange's numbers of them, as in round trips
    std::vector<nxResultOrder> orders;      // by their numbers; those that were kept
    std::map<std::string, unsigned long long> orderCounts;  // by job, with those that were not
    std::vector<nxResultLine> lines;
    std::vector<nxResultLog> log;
    unsigned long long logCount = 0;
    std::vector<nxResultFailure> failures;
    std::optional<std::vector<nxResultVariant>> envelope;
};
