#pragma once

#include <string>
#include <vector>

// One technical indicator over the bars of a collection: it keeps a line of results for each of its result
// names, one entry a bar, and beside them the results of the bar under construction. The collection owns it
// through the script's indicator object, and feeds it the raw arrays, oldest bar first; all arrays are of one
// length.
//
// Takes no lock: whoever feeds it keeps readers away.
class nxTechnicalIndicator
{
public:
    using Values = std::vector<double>;

    nxTechnicalIndicator() = default;
    nxTechnicalIndicator(const nxTechnicalIndicator&) = delete;
    nxTechnicalIndicator& operator=(const nxTechnicalIndicator&) = delete;
    virtual ~nxTechnicalIndicator() = default;

    // The names of the result lines, in the order in which the documentation lists them.
    virtual std::vector<std::string> GetResultNames() const = 0;
    // The type under which a script asks for it.
    virtual const char* GetTypeName() const = 0;

    // The result of the completed bar `index`, counted back from the newest one, which is 0. False for an
    // unknown name, an index beyond the first bar, and a bar too early for a result.
    virtual bool GetNamedResult(unsigned int index, const std::string& name, double& result) const = 0;
    // The same for the bar under construction; false when there is none.
    virtual bool GetRealTimeResult(const std::string& name, double& result) const = 0;

    // Computes the results up to the newest of `count` completed bars; the arrays may hold one entry more.
    virtual void CalculateNewResult(const Values& open, const Values& high, const Values& low,
                                    const Values& close, const Values& volume, unsigned int count) = 0;
    // Computes the results of the bar under construction, which is the last entry of each array; what is
    // known of the completed bars stays untouched.
    virtual void CalculateRealTime(const Values& open, const Values& high, const Values& low,
                                   const Values& close, const Values& volume) = 0;
    virtual void ClearRealTimeResult() = 0;

protected:
    // The number of bars with an entry.
    unsigned int _GetSize() const { return _size; }
    // True for an indicator whose newest result takes in every bar since the first.
    virtual bool _UseAllDataPoints() const { return false; }

    unsigned int _size = 0;
};
