#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/time/nxDateTime.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxExactRandom.h"
#include "host/feed/nxFeedFormat.h"
#include "host/synthetic/nxSyntheticBook.h"

// What nxMarketGenerator makes. The defaults give a day of a share at a hundred.
struct nxMarketGeneratorOptions
{
    unsigned long long seed = 1;
    nxFeedKind kind = nxFeedKind::Quote;   // or Depth
    nxDateTime start{1704724200};          // 2024-01-08 14:30:00 UTC
    unsigned int durationSeconds = 23400;  // six and a half hours
    std::string product = "SIM";
    nxDecimal startPrice =
        nxDecimal::FromMantissa(10000, 2);  // a multiple of the tick size, of 20 ticks or more
    nxDecimal tickSize = nxDecimal::FromMantissa(1, 2);
    nxDecimal lotSize = nxDecimalOne;  // the size written for one lot
    unsigned int minLots = 1;          // of one order; uniform between the two
    unsigned int maxLots = 5;
    unsigned int rateScale = 60;  // times the published rates, which are per minute; 60: as many per second
};

// What went on in the market behind the rows. Volumes are lots and balance: placed = traded + cancelled +
// resting.
struct nxMarketGeneratorStatistics
{
    unsigned long long rows = 0;
    unsigned long long limitOrders = 0, marketOrders = 0, cancellations = 0, trades = 0;
    unsigned long long placed = 0, traded = 0, cancelled = 0, resting = 0;
};

// Writes a synthetic trading day as quotes or depth in CSV. The same options give the same bytes on every
// machine.
//
// The market is a limit order book without intelligence: limit orders, market orders and cancellations arrive
// as independent Poisson processes; the rates of limit orders and cancellations depend on the distance in
// ticks from the opposite best price. The model and the rates are those of R. Cont, S. Stoikov, R. Talreja,
// "A Stochastic Model for Order Book Dynamics", Operations Research 58(3), 2010, after E. Smith, J. D.
// Farmer, L. Gillemot, S. Krishnamurthy, "Statistical Theory of the Continuous Double Auction", Quantitative
// Finance 3, 2003. Orders differ in size here, a side never runs empty and no price falls below one tick.
//
// Quotes: the first row gives both sides; after that a row for each change of a best price or its volume,
// with the cells that changed, and before it a row for each trade (one price level that a market order took
// from), with the side of the market order. Depth: the levels of the opening book, then each level that
// changes; depth rows carry no trades, but the market does not depend on what is written of it, so the quotes
// of the same seed hold the trades that go with it.
//
// Owned by its user, used by one thread, once. Nothing here throws but what the sink throws.
class nxMarketGenerator
{
public:
    // Takes the next bytes of the file; false stops the generator.
    using Sink = std::function<bool(std::string_view)>;
    // Called now and then with the seconds generated so far.
    using Progress = std::function<void(unsigned int seconds)>;

    explicit nxMarketGenerator(nxMarketGeneratorOptions options);

    // False: an option cannot be used; GetFailure() tells which.
    [[nodiscard]] bool Check();
    // The same, and when the sink stopped it.
    [[nodiscard]] bool Generate(const Sink& sink, const Progress& progress = {});

    [[nodiscard]] const std::string& GetFailure() const { return _failure; }
    [[nodiscard]] const nxMarketGeneratorStatistics& GetStatistics() const { return _statistics; }

private:
    bool _SetStartTicks();
    void _OpenBook();
    long long _GetWait(unsigned long long rate);
    unsigned long long _GetCancelRate(nxSide side) const;
    void _Step(unsigned long long draw, const nxBySide<unsigned long long>& cancels);
    void _PlaceOrder(nxSide side, long long distance);
    void _CancelOrder(nxSide side, unsigned long long draw);
    unsigned int _DrawLots();
    void _WriteChanges();
    void _WriteTrade(const nxSyntheticBook::Change& change);
    void _WriteQuote();
    void _WritePrefix();
    void _WritePrice(long long ticks);
    void _WriteSize(unsigned long long lots);
    void _EndRow();

    struct Best
    {
        long long price = 0;
        unsigned long long volume = 0;
    };

    nxMarketGeneratorOptions _options;
    nxExactRandom _random;
    nxSyntheticBook _book;
    long long _startTicks = 0;
    std::vector<nxSyntheticBook::Change> _changes;  // of the current moment
    long long _time = 0;                            // nanoseconds since 1970 UTC
    nxBySide<Best> _written;                        // quotes: what the rows so far say of bid and ask
    std::string _text;                              // rows on their way to the sink
    nxMarketGeneratorStatistics _statistics;
    std::string _failure;
};
