#pragma once

#include <deque>
#include <functional>
#include <optional>

#include "host/market/nxAdjustment.h"
#include "host/results/nxExcursions.h"
#include "host/results/nxRoundTrip.h"

// The open lots of one job in one product, and the round trips that its fills make of them. What consecutive
// fills match between the same two orders is one round trip, given when nothing can be added to it any more.
// A value; memory grows with the open lots.
class nxLotBook
{
public:
    struct Fill
    {
        nxSide side = nxSide::Buy;
        nxDecimal price;
        unsigned int volume = 0;
        nxExactAmount fee;
        unsigned int order = 0;
        long long time = 0;
        bool isLast = false;  // of its order
    };
    // Takes a round trip that is complete.
    using Take = std::function<void(nxRoundTrip&&)>;

    nxLotBook(unsigned int product, const nxDecimal& pointValue, nxMatching matching)
        : _product(product), _pointValue(pointValue), _matching(matching)
    {
    }

    void Add(const Fill& fill, const Take& take);
    // The market shows that price.
    void See(const nxDecimal& price)
    {
        if (_lots.empty() || !price.IsValid()) return;
        _lowest.See(_latest, price);
        _highest.See(_latest, price);
    }
    // A split makes other lots of what is open, a roll moves its prices; what was seen of the market before
    // is of other prices then. The rest leaves them as they are.
    void Adjust(const nxAdjustment& adjustment, const Take& take);
    // Nothing will be filled any more.
    void Complete(const Take& take);
    // Nothing of that order will be.
    void CompleteOrder(unsigned int order, const Take& take)
    {
        if (_pending && _pending->trip.exitOrder == order) Complete(take);
    }
    bool IsEmpty() const { return _lots.empty(); }

private:
    // What one fill opened and is not closed yet; by the method of averages all that is open.
    struct Lot
    {
        unsigned long long number;
        unsigned int order;
        long long time;
        unsigned long long volume;
        nxExactAmount prices;  // times volumes
        nxExactAmount fee;
    };
    // One that consecutive fills may still add to.
    struct Pending
    {
        nxRoundTrip trip;
        nxExactAmount entryPrices, exitPrices;  // times volumes
    };

    void _Open(const Fill& fill, unsigned long long volume, const nxExactAmount& fee);
    void _Close(const Fill& fill, unsigned long long volume, const nxExactAmount& fee, const Take& take);

    unsigned int _product;
    nxDecimal _pointValue;
    nxMatching _matching;
    nxSide _side = nxSide::Buy;      // of what is open
    unsigned long long _latest = 0;  // number of the latest lot
    std::deque<Lot> _lots;
    nxExcursions _lowest{false}, _highest{true};
    std::optional<Pending> _pending;
};
