#pragma once

#include <deque>

#include "host/jobs/nxBarBuilder.h"
#include "scriptFramework/analytics/nxAlgoTickDataCollectionObject.h"

class nxHostProduct;

// What a collection of a product is built from.
struct nxBarOrigin
{
    bool hasRows = false;        // a bars file of the run holds the product
    bool hasTrades = false;      // quotes and trades do
    long long rowPeriod = 0;     // nanoseconds between the rows of the bars file; 0: not known
    long long rowDelay = 0;      // nanoseconds by which they come later than their times, at most
    bool rowsBearStart = false;  // in the file; events come at the end
    nxTradingHours hours;
    nxBarTerms terms;  // of the period that was asked for
};

// A collection of the reference host. Its bars come from the rows of a bars file, or, for a product without
// one and by a rule that counts trades, from the trades; the history at its making from what was replayed by
// then, and once it is subscribed from each event as it comes. With real time it has a bar under
// construction: from the trades where there are any, else from the rows of a finer file. Used on the replay's
// thread; the product outlives it.
class nxHostTickDataCollection : public nxAlgoTickDataCollectionObject
{
public:
    // start and end, null where there is none, bound the times of the bars, both included. ticks is how many
    // of the history are taken, the newest ones; 0: all.
    nxHostTickDataCollection(nxHostProduct& product, const std::string& period,
                             const nxTickDataPeriodEnum& periodEnum, unsigned int ticks,
                             const nxDateTime& start, const nxDateTime& end, const nxBarOrigin& source);
    ~nxHostTickDataCollection() override;

    // Takes in what was replayed so far; to be called once.
    void LoadHistory();

    // The product's events and the passing of time, once it is subscribed.
    void Feed(const nxFeedEvent& event);
    void Close(long long time);
    // From which time on Close has something to do.
    long long GetDue() const { return nxTime::GetLater(_builder.GetDue(), _GetDelay()); }

    // The script has asked to have it fed.
    bool IsSubscribed() const { return _isSubscribed; }
    // No bar of its product was ever complete, as far as it was fed.
    bool IsEmpty() const { return _completed == 0; }
    nxHostProduct& GetHostProduct() const;

protected:
    nxAlgoIndicatorObject* _createIndicator(const std::string& type,
                                            const std::map<std::string, std::string>& parameters,
                                            std::string& error) override;
    bool _Subscribe(bool realTime) override;

private:
    nxBarBuilder _MakeBuilder() const
    {
        return {_source.terms, _source.hours, _source.rowPeriod, _source.rowsBearStart};
    }
    // Brings the builder to the present and gives the bars completed on the way, without the first `known`.
    std::deque<nxTickData> _ReadBars(unsigned long long known, std::size_t most);
    bool _IsWanted(const nxTickData& bar) const;
    // All that belongs to a bar has come by so much after its end.
    long long _GetDelay() const { return _source.hasRows ? _source.rowDelay : 0; }
    // One that is complete; null: none is.
    void _Add(const nxTickData* bar)
    {
        if (bar != nullptr) _AddCompleted(*bar);
    }
    void _AddCompleted(const nxTickData& bar);
    // The trade of a quote, its price perhaps that of an earlier one; false when it is none.
    bool _ReadTrade(const nxFeedQuote& quote);

    nxDateTime _start;
    nxDateTime _endDate;
    nxBarOrigin _source;
    nxBarBuilder _builder;
    unsigned long long _completed = 0;  // bars that the builder gave, wanted or not
    unsigned long long _seen = 0;       // events replayed when it was up to date last
    nxDecimal _last;
    unsigned int _lastVolume = 0;
    bool _realTime = false;
    bool _isSubscribed = false;
};
