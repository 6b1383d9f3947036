#pragma once

#include "host/exchange/nxExchangeOrder.h"

// Why there was a fill.
enum class nxFillCause { Took, Touched, TradedThrough, Queue, Crossed, Bar, OwnOrder, Assumed };

// As the run's record has it, and as a sentence tells it.
const char* nxGetName(nxFillCause cause);
const char* nxGetText(nxFillCause cause);

// Why an order's place in the queue is another one.
enum class nxQueueMove { Joined, Traded, Shown };

// Is told what becomes of the orders of a book. Called inside the book's loops, after the order has counted
// it: must not call the book back, but may take volume off other orders, down to what they have executed.
class nxBookListener
{
public:
    virtual void OnFill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume, bool isMaker,
                        nxFillCause cause) = 0;
    virtual void OnTriggered(nxExchangeOrder& order) = 0;
    virtual void OnQueueMoved(nxExchangeOrder& order, const nxVolume& before, nxQueueMove move) = 0;
    // The order, which has left the book, has to end because it would trade with the other one of its owner.
    virtual void OnSelfTrade(nxExchangeOrder& order, const nxExchangeOrder& other) = 0;

    // Counts a fill in the order and tells of it.
    void Fill(nxExchangeOrder& order, const nxDecimal& price, unsigned int volume, bool isMaker,
              nxFillCause cause);
    // A stop that waited works now.
    void Trigger(nxExchangeOrder& order);

protected:
    ~nxBookListener() = default;
};
