#pragma once

#include "host/accounts/nxLedger.h"
#include "host/exchange/nxExchangeObserver.h"
#include "host/exchange/nxVenue.h"
#include "host/market/nxMarket.h"
#include "host/results/nxResultCollector.h"
#include "host/run/nxRunOutput.h"

// What the record of a run tells of its money, so that a reader can count it again: the terms of each product
// that may be traded, each fill as the ledger books it, and what the fills of a job came to. Used on the
// run's thread.
class nxTradingRecord : public nxExchangeObserver
{
public:
    // All outlive it. The ledger is told of each fill before the record is.
    nxTradingRecord(nxRunOutput& output, const nxRunState& state, const nxLedger& ledger,
                    const nxResultCollector& results)
        : _output(output), _state(state), _ledger(ledger), _results(results)
    {
    }
    void WriteProduct(const nxMarket& market, const nxVenue::Product& product, long long time);
    // And then what it did to the positions of jobs.
    void WriteAdjustment(const nxAdjustment& adjustment);
    void WriteCash(unsigned int job, const nxAdjustment& adjustment, const nxAdjusted& adjusted);
    void OnEvent(const nxExchangeOrder& order, const nxExchangeEvent& event,
                 const nxMarketProduct& market) override;
    // A line, and one for each currency; nothing for a job without orders. row: the event that was the run's
    // last.
    static void WriteResult(nxRunOutput& output, const nxLaunchedJob& job, const nxTradingStatistics& trading,
                            unsigned long long row);

private:
    void _WriteFees(const nxMarket& market, long long time);
    // In front of the first product.
    void _WriteExchange(long long time);

    nxRunOutput& _output;
    const nxRunState& _state;
    const nxLedger& _ledger;
    const nxResultCollector& _results;
    bool _hasTerms = false;
};
