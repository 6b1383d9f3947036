#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "base/values/nxExactAmount.h"
#include "host/exchange/nxExchangeObserver.h"
#include "host/exchange/nxSimulatedExchange.h"

// What happened to some orders of a run, for a person who asks why an order was filled or why not: one line
// an event, in recorded time, and at the end what a rest was waiting for. Owned by the server, used on the
// replay's thread.
class nxOrderStories : public nxExchangeObserver
{
public:
    // The fee of a fill.
    using FeeOf = std::function<nxExactAmount(const nxExchangeOrder& order, const nxExchangeEvent& fill)>;

    // A number that stands twice is told once.
    nxOrderStories(const std::vector<unsigned int>& orders, FeeOf feeOf);

    // In the order in which they were asked for; jobs: the names of the owners, of a single one not told.
    // False: one of the numbers is above `count`, that of the run's orders, of which err is told.
    [[nodiscard]] bool Write(std::ostream& out, std::ostream& err, unsigned int count,
                             const std::vector<std::string>& jobs);

    void OnRequest(const nxExchangeOrder& order, nxOrderRequest request, const nxOrderTerms& terms,
                   const nxMarketProduct& market, long long sent, long long due) override;
    void OnEvent(const nxExchangeOrder& order, const nxExchangeEvent& event,
                 const nxMarketProduct& market) override;
    void OnQueueMove(const nxExchangeOrder& order, const nxVolume& before, nxQueueMove move,
                     long long time) override;
    void OnMarket(unsigned int product, const nxMarketProduct& market, const nxTraded* traded,
                  long long time) override;

private:
    // The best price that was there for the order, and when.
    struct Best
    {
        nxDecimal price;
        long long time = 0;
        // The one that is better in the book of that side.
        void Note(const nxDecimal& other, nxSide side, long long when);
    };
    // A run of moves in the queue, told in one line.
    struct Moves
    {
        long long first = 0, last = 0;
        nxVolume from, to;
        unsigned int trades = 0, changes = 0;
        unsigned long long traded = 0, cancelled = 0;
    };
    struct Story
    {
        unsigned int number = 0;
        std::vector<std::string> lines;
        Moves moves;
        nxExchangeOrder order;  // as it was last seen
        Best quote;             // of the other side, while the order lived
        Best trade;
        unsigned long long tradedAtPrice = 0;  // by those who trade with its side
        std::string reason;                    // of its end

        void Tell(long long time, const std::string& text);
        void TellMoves();
        void NoteQuotes(const nxMarketProduct& market, long long time);
    };

    Story* _Find(const nxExchangeOrder& order);
    static std::string _ExplainRest(const Story& story);

    std::vector<Story> _stories;
    FeeOf _feeOf;
};
