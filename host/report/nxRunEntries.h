#pragma once

#include <deque>
#include <map>
#include <span>

#include "host/report/nxRunRecord.h"
#include "host/results/nxResultRun.h"

// Makes of the entries of a record what a result tells of the run in detail: orders with their events, fills,
// chart lines, log and outputs. The entries may come from a run that goes on or from a file. Bounded. Used on
// one thread.
class nxRunEntries
{
public:
    // time: nanoseconds since 1970.
    void Take(long long time, const std::string& job, std::string_view type,
              std::span<const nxRunRecord::Field> fields);
    // Into the result, whose jobs and products are there by then. Once.
    void MoveTo(nxResult& result);

private:
    using Fields = std::span<const nxRunRecord::Field>;

    void _TakeLog(long long time, const std::string& job, std::string_view level, std::string_view text);
    void _TakeRequest(long long time, const std::string& job, Fields fields);
    void _TakeEvent(long long time, const std::string& job, Fields fields);
    void _TakeFill(long long time, const std::string& job, Fields fields);
    void _TakeLine(long long time, const std::string& job, Fields fields);
    nxResultOrder* _Find(unsigned int number);
    nxResultOrder& _Add(unsigned int number);
    static void _AddEvent(nxResultOrder& order, long long time, std::string name, std::string text);

    std::map<unsigned int, nxResultOrder> _firstOrders, _lastOrders;     // by number
    std::map<std::string, nxResultProduct> _products;                    // what is told of them
    std::map<std::string, std::map<std::string, std::string>> _outputs;  // by job
    std::vector<nxResultLine> _lines;
    std::vector<nxResultLog> _firstLog;
    std::deque<nxResultLog> _lastLog;
    unsigned long long _logCount = 0;
};
