#pragma once

#include <span>
#include <string_view>

// How a resting limit order comes to be filled: in what the models differ. What they have in common is the
// book's, see docs/exchange.md.
struct nxFillRule
{
    // An order whose price a trade or a quote of the other side comes to is filled wholly, whatever they
    // have.
    bool fillsWhole;
    // A trade at an order's price fills it, as far as the queue ahead of it leaves something.
    bool fillsAtPrice;
};

// One row of the table of fill models. Rows live as long as the process, so a model is known by its address.
struct nxFillModel
{
    const char* name;  // as --fills takes it
    const char* help;  // when it fills, in a few words
    int rank;          // from the most pessimistic model up; no two have the same
    nxFillRule rule;

    // The default first.
    static std::span<const nxFillModel> GetAll();
    static const nxFillModel& GetDefault() { return GetAll().front(); }
    // Null for an unknown name.
    static const nxFillModel* Find(std::string_view name);
};
