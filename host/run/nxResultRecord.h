#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/report/nxJsonWriter.h"
#include "host/results/nxResultCollector.h"
#include "host/run/nxRunOutput.h"

// What the record of a run tells of its result: what is run, round trips, days and equity as they come, and
// at the end all that measures and pictures are made of, so that nxRecordReader gets the same result from it.
// Used on the run's thread.
class nxResultRecord
{
public:
    // All outlive it.
    nxResultRecord(nxRunOutput& output, const nxRunState& state, const nxResult& result)
        : _output(output), _state(state), _result(result)
    {
    }

    // For the collector; nothing where no record is asked for.
    nxResultCollector::Listeners MakeListeners();
    // The first line, of the facts and jobs of the result.
    void WriteRun();
    // Once the result is whole: the accounts, the prices, the envelope, and the last line.
    void WriteEnd();

private:
    void _WriteTrip(unsigned int job, const nxRoundTrip& trip);
    void _WriteDay(const nxResultData& data, const nxResultDay& day, const nxResultCollector::Prices& prices);
    void _WriteEquity(const nxResultData& data, long long time, const nxEquityBucket& equity);
    void _WriteAccount(const nxResultData& data);
    void _WritePrices(const nxResultProduct& product);
    void _WriteEnvelope();
    std::string _DescribeJobs(bool isEnd) const;

    nxRunOutput& _output;
    const nxRunState& _state;
    const nxResult& _result;
    std::map<std::pair<unsigned int, std::string>, double> _lastEquity;
};
