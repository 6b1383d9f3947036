#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "host/results/nxResultData.h"

// The money of one job in one currency, or of all jobs in it, as it is followed through a run or through the
// record of one. Used on one thread.
class nxResultAccount
{
public:
    struct Fill
    {
        nxSide side;
        nxDecimal price;
        unsigned int volume;
        nxExactAmount fee;
        nxDecimal pointValue;
        bool isMaker;
        bool isWithOwn;      // the other side was an order of the same script
        nxDecimal decision;  // at what price the market stood when the order was sent; null: not known
    };

    nxResultAccount(std::optional<unsigned int> job, const nxCurrencyEnum& currency, double capital);

    // Answers what it was worth: price, volume and point value multiplied.
    nxExactAmount Add(const Fill& fill);
    // The value of what is held changed. opened: 1 for a position opened, -1 for one closed, 0 for neither.
    void Move(const nxExactAmount& change, int opened, long long time);
    // Notes the profit of that time, as the sample of equity that is returned.
    nxEquityBucket See(const nxExactAmount& profit, long long time);
    // Nothing comes after that time.
    void Finish(long long last);

    nxResultData data;
    nxResultAccount* all = nullptr;  // of a job: that of all jobs together, where it is wanted

private:
    nxExactAmount _exposure;
    unsigned int _openPositions = 0;
    long long _openSince = 0;
};

// The accounts of single jobs, and those of all jobs together by currency. They stay where they are.
class nxResultAccounts
{
public:
    using List = std::vector<std::unique_ptr<nxResultAccount>>;

    // Null: not made yet. job: none for that of all jobs.
    nxResultAccount* Find(std::optional<unsigned int> job, const nxCurrencyEnum& currency) const;
    nxResultAccount& Make(std::optional<unsigned int> job, const nxCurrencyEnum& currency, double capital);

    const List& GetSingle() const { return _single; }
    const List& GetAll() const { return _all; }
    template <class Do>
    void ForEach(Do apply) const
    {
        for (const List* accounts : {&_single, &_all})
            for (const auto& account : *accounts)
                apply(*account);
    }

    // The data of those with orders: in the order of jobs and of the currencies' first orders; then those of
    // all jobs together, where several have traded a currency, to which sumUp adds what is not followed as it
    // comes. Once.
    template <class SumUp>
    std::vector<nxResultData> Take(SumUp sumUp)
    {
        _Sort();
        for (nxResultAccount* const all : _GetShared()) {
            _SumUp(*all);
            sumUp(*all);
        }
        return _Take();
    }

private:
    // Those of all jobs that several jobs have; the others are no results.
    std::vector<nxResultAccount*> _GetShared() const;
    void _Sort();
    void _SumUp(nxResultAccount& all) const;
    std::vector<nxResultData> _Take();

    List _single, _all;
};
