#pragma once

#include "host/accounts/nxPositionKeeper.h"
#include "host/accounts/nxTradingStatistics.h"

struct nxAdjustment;
struct nxExchangeEvent;
struct nxExchangeOrder;
struct nxFeedBar;

// Is told what the ledger books. Called on the run's thread; must not call the ledger back.
class nxLedgerObserver
{
public:
    // A fill has been booked, which cost that fee.
    virtual void OnFill(const nxExchangeOrder& order, const nxExchangeEvent& fill,
                        const nxExactAmount& fee) = 0;
    // What a job has of a product counts at another mark, or is another position. money: of its currency.
    virtual void OnValue(unsigned int job, unsigned int product, const nxPositionKeeper& position,
                         const nxDecimal& mark, const nxTradingStatistics::Money& money) = 0;
    // A split, a roll and the like meet what a job has of a product, before it is valued anew.
    virtual void OnAdjustment(unsigned int job, unsigned int product, const nxAdjustment& adjustment) = 0;
    // A position meets a bar, before it is valued at its close.
    virtual void OnBar(unsigned int job, unsigned int product, const nxFeedBar& bar) = 0;

protected:
    ~nxLedgerObserver() = default;
};
