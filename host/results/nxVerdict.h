#pragma once

#include <string>
#include <vector>

#include "host/results/nxMeasures.h"

// What the measures of a result say in plain sentences, the most important first: whether it is more than
// luck, what costs took, and on how little the profit hangs. It praises nothing and advises nothing.
class nxVerdict
{
public:
    // Both outlive it.
    nxVerdict(const nxMeasureBasis& basis, const nxResult& result);

    const std::vector<std::string>& GetSentences() const { return _sentences; }
    const nxDayStatistics::Interval& GetMeanInterval() const { return _meanDay; }

private:
    void _JudgeLuck();
    void _JudgeCosts();
    void _JudgeBestTrips();
    void _JudgeSource();
    void _JudgeFills();
    template <class... Parts>
    void _Say(const char* form, const Parts&... parts);
    std::string _Money(double amount) const;

    const nxMeasureBasis& _basis;
    const nxResult& _result;
    nxDayStatistics::Interval _meanDay;
    std::vector<std::string> _sentences;
};
