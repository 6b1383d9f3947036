#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/report/nxRecordLines.h"
#include "host/results/nxLotBook.h"
#include "host/results/nxResultAccount.h"
#include "host/results/nxResultRun.h"

// What the orders of a run came to as far as the lines of its record tell while it goes on: of a record that
// was cut, or of version 1, of which the last lines do not tell it. Between two fills, and the ends of days,
// nothing is known of the marks. Used on one thread.
class nxRecordedAccounts
{
public:
    // Its products are those of the lines so far; outlives it. makesTrips: out of the fills.
    nxRecordedAccounts(const nxResult& result, bool makesTrips) : _result(result), _makesTrips(makesTrips) {}

    // A line of a job.
    void Take(const nxRecordLines& line, unsigned int job, long long time);
    void AddTrip(unsigned int job, nxRoundTrip trip);
    // As the collector of a run gives them; last: the time of the last line. Once.
    std::vector<nxResultData> TakeResults(long long last);

private:
    // Of one job in one product.
    struct Holding
    {
        nxResultAccount* account;
        nxLotBook lots;
        nxExactAmount profit, exposure;
        bool isOpen = false;
    };
    struct Order
    {
        unsigned int product = 0;
        unsigned long long volume = 0;
    };

    nxResultAccount& _GetAccount(std::optional<unsigned int> job, const std::string& currency);
    Holding& _GetHolding(unsigned int job, unsigned int product);
    std::optional<unsigned int> _FindProduct(const std::string& name) const;
    void _TakeRequest(const nxRecordLines& line, unsigned int job);
    void _TakeEvent(const nxRecordLines& line, unsigned int job);
    void _TakeFill(const nxRecordLines& line, unsigned int job, long long time);
    void _AddMoney(const nxRecordLines& line, Holding& holding, unsigned int product);
    void _TakeDay(const nxRecordLines& line, unsigned int job, long long time);
    void _NoteVolume(unsigned int job, Order& order, unsigned long long volume);
    static void _See(nxResultAccount& account, const nxExactAmount& profitChange, long long time);

    const nxResult& _result;
    const bool _makesTrips;
    nxResultAccounts _accounts;
    std::map<std::pair<unsigned int, unsigned int>, Holding> _holdings;  // by job and product
    std::map<unsigned long long, Order> _orders;                         // by number
};
