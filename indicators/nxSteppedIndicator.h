#pragma once

#include <string_view>

#include "base/memory/nxGrowingArray.h"
#include "indicators/nxIndicatorArguments.h"
#include "indicators/nxIndicatorType.h"
#include "indicators/nxTechnicalIndicator.h"

// An indicator of the catalogue: feeds its formula bar by bar and keeps the results. Bars that were added
// without being calculated are caught up with; fewer bars than before mean another history, which is
// calculated anew. A bar with a value that is not finite has no results and is left out of all further ones.
class nxSteppedIndicator final : public nxTechnicalIndicator
{
public:
    // The type outlives the indicator.
    nxSteppedIndicator(const nxIndicatorType& type, const nxIndicatorArguments& arguments);

    std::vector<std::string> GetResultNames() const override;
    const char* GetTypeName() const override { return _type.name; }
    bool GetNamedResult(unsigned int index, const std::string& name, double& result) const override;
    bool GetRealTimeResult(const std::string& name, double& result) const override;
    void CalculateNewResult(const Values& open, const Values& high, const Values& low, const Values& close,
                            const Values& volume, unsigned int count) override;
    void CalculateRealTime(const Values& open, const Values& high, const Values& low, const Values& close,
                           const Values& volume) override;
    void ClearRealTimeResult() override { _hasRealTime = false; }

protected:
    bool _UseAllDataPoints() const override { return _type.usesAllBars; }

private:
    // The place of a line, or the number of lines for an unknown name.
    std::size_t _FindLine(const std::string& name) const;

    const nxIndicatorType& _type;
    nxIndicatorArguments _arguments;
    std::unique_ptr<nxIndicatorFormula> _formula;
    std::vector<unsigned int> _barsBack;   // of each line
    std::vector<std::string_view> _names;  // of each line
    nxGrowingArray<double> _results;       // bar after bar, oldest first, a value for each line
    Values _newest;                        // of the bar that is taken in, a value for each line
    Values _realTime;                      // a value for each line
    bool _hasRealTime = false;
};
