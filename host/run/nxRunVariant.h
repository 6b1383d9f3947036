#pragma once

#include <string>
#include <vector>

#include "host/report/nxRunStatistics.h"
#include "host/run/nxRunOptions.h"

// Which markets a run sent orders to. A model that none of its orders met would change nothing in it.
struct nxRunReach
{
    bool hasBooks = false;
    bool hasBars = false;

    nxRunReach() = default;
    explicit nxRunReach(const nxRunStatistics& statistics);
    bool IsEmpty() const { return !hasBars && !hasBooks; }
    bool IsOfBarsAlone() const { return hasBars && !hasBooks; }
};

// A run under other models than its own: what it comes to there tells how much of the result is the models'.
struct nxRunVariant
{
    std::string name;
    nxExchangeOptions exchange;
    nxLatency feedLatency;
    std::vector<nxProductDescription> products;

    void Apply(nxRunOptions& options) const;

    // The run itself, from the most optimistic fill model on, and those that can differ from it: other fill
    // models and a queue that only trades move where it sent orders to books, other bar models and limits
    // that must be traded through where it sent some to bars, and twice the latency.
    static std::vector<nxRunVariant> GetForEnvelope(const nxRunOptions& own, const nxRunReach& reach);
    // The same without the run itself, and half the latency, and half and twice the fees, where there are
    // any.
    static std::vector<nxRunVariant> GetForBest(const nxRunOptions& own, const nxRunReach& reach);
    // What the run itself is called among its variants.
    static const char* GetOwnName(const nxExchangeOptions& own, const nxRunReach& reach);
};
