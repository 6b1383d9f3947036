#pragma once

#include <memory>
#include <string>

#include "indicators/nxTechnicalIndicator.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

// A script's handle on one indicator over the bars of a collection: the indicator, which it owns, and the
// name under which the script finds it. It computes nothing itself. Owned by the collection, which feeds it.
// A copy shares the indicator. Takes no lock.
class nxAlgoIndicatorObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoIndicatorObject";
    static const nxLuaWrapper<nxAlgoIndicatorObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoIndicatorObject>::PropertyType Properties[];
    using Values = nxTechnicalIndicator::Values;

    // Takes ownership of the indicator.
    nxAlgoIndicatorObject(nxAlgoJobInterface* job, nxTechnicalIndicator* indicator)
        : nxAlgoObject(job), _indicator(indicator)
    {
    }

    void SetName(const std::string& name) { _name = name; }

    // How many lines of results, each as long as the bars.
    std::size_t GetLineCount() const { return _indicator->GetResultNames().size(); }

    // Each is the indicator's operation of that name.
    void CalculateNewResult(const Values& open, const Values& high, const Values& low, const Values& close,
                            const Values& volume, unsigned int count)
    {
        _indicator->CalculateNewResult(open, high, low, close, volume, count);
    }
    void CalculateRealTime(const Values& open, const Values& high, const Values& low, const Values& close,
                           const Values& volume)
    {
        _indicator->CalculateRealTime(open, high, low, close, volume);
    }
    void ClearRealTimeResult() { _indicator->ClearRealTimeResult(); }

    bool getValue(nxLuaParameters&, nxLuaResults&);
    bool getRealTimeValue(nxLuaParameters&, nxLuaResults&);

    bool Get_name(nxLuaResults&);
    bool Get_type(nxLuaResults&);

private:
    const std::string& _Keep(const char* name);

    std::shared_ptr<nxTechnicalIndicator> _indicator;
    std::string _name;
    std::string _asked;  // the result that the script asked for last: most ask for one, again and again
};
