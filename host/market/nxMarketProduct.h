#pragma once

#include <optional>
#include <span>
#include <string>

#include "base/enums/nxBitMasks.h"
#include "base/records/nxMarketDepth.h"
#include "base/records/nxPrice.h"
#include "base/records/nxPriceTradeVolumes.h"
#include "host/feed/nxFeedEvent.h"
#include "host/market/nxBestQuote.h"
#include "host/market/nxBookSide.h"
#include "host/market/nxDailyFigures.h"

struct nxAdjustment;
struct nxImpliedQuote;

// What the replayed market of one product looks like now: its price, the change that the latest event
// brought, its book and its state. Owned by the server, one for all jobs; changed on the replay's thread
// between callbacks only, so views may point into it.
//
// The daily figures come from the trades replayed: open, high, low and total volume of the UTC day of the
// latest trade, previous close the last trade of the day before. A bar sets open, high, low, close and last
// to its own.
class nxMarketProduct
{
public:
    explicit nxMarketProduct(std::string name);
    nxMarketProduct(const nxMarketProduct&) = delete;
    nxMarketProduct& operator=(const nxMarketProduct&) = delete;

    const std::string& GetName() const { return _name; }
    // It is described by legs, whose prices imply quotes of it.
    bool IsStrategy() const { return _isStrategy; }
    void SetStrategy() { _isStrategy = true; }
    const nxPrice& GetPrice() const { return _price; }
    const nxPrice& GetPriceUpdate() const { return _update; }
    const nxBookSide& GetLevels(nxSide side) const { return _book[side]; }
    // The same as scripts read it. Kept from the first call on: of most books no script wants it.
    const nxMarketDepth& GetDepth() const;
    // Direct or implied, as the price has it; null where there is none.
    nxBestQuote GetBest(nxSide side) const { return nxBestQuote(_price, side); }
    // Of the best prices of a side that quotes have shown so far, each change counted once, rounded down; 0
    // before there was one with a size.
    unsigned int GetMeanSize(nxSide side) const { return _sizes[side].GetMean(); }
    const nxProductStateBitMask& GetState() const { return _state; }
    // The volume traded at each price on the UTC day of the latest trade, as a snapshot. Bars do not count:
    // they do not tell at which prices their volume was traded.
    const nxPriceTradeVolumes& GetTradeVolumes() const { return _volumes; }
    // What the latest event did to it: a delta with its one trade, or a reset when a day began, with that
    // day's first trade if it was one. False when nothing changed.
    [[nodiscard]] bool GetTradeVolumesUpdate(nxPriceTradeVolumes& update) const;

    void ApplyQuote(const nxFeedQuote& quote, long long time);
    void ApplyBar(const nxFeedBar& bar, long long time);
    void ApplyDepth(std::span<const nxFeedLevel> levels);
    // Makes the best levels of the book the price, for a product that has no quotes of its own. False when
    // neither changed.
    [[nodiscard]] bool QuoteFromDepth();
    // The prices that it shows are those of after a split or a roll. Its book is not known until the data
    // show it anew.
    void Adjust(const nxAdjustment& adjustment);
    // What the legs of a strategy imply now, beside its own quotes. False when it was that already.
    [[nodiscard]] bool ApplyImplied(const nxImpliedQuote& quote);
    // Whether the data have shown depth, though its book may be empty now.
    bool HasDepth() const { return _hasDepth; }
    const nxDailyFigures& GetDailyFigures() const { return _daily; }
    // What the latest event traded; null when it was no trade, or one of unknown size.
    const nxVolume& GetTraded() const { return _traded; }
    // False when the state is that already.
    [[nodiscard]] bool SetState(unsigned int bits);

private:
    struct Sizes
    {
        unsigned long long sum = 0;
        unsigned long long count = 0;

        unsigned int GetMean() const { return count == 0 ? 0 : static_cast<unsigned int>(sum / count); }
    };

    // What _update has beside no-change.
    enum class Changed : unsigned char { Any, BestQuote, Bar };

    // Of an event that changes these.
    void _BeginUpdate(Changed changes);
    void _CountSize(nxSide side);
    template <class Value>
    bool _Change(const Value& (nxPrice::*getter)() const, void (nxPrice::*setter)(const Value&),
                 const Value& value);
    void _AddTrade(const nxDecimal& price, const nxVolume& volume, long long time);
    void _BeginDay(long long time);
    void _AddVolume(const nxVolume& volume);

    std::string _name;
    bool _isStrategy = false;
    nxPrice _price;
    nxPrice _update;  // no-change in every field the latest event left alone
    Changed _changed = Changed::Any;
    nxBySide<nxBookSide> _book{nxBookSide(nxSide::Buy), nxBookSide(nxSide::Sell)};
    mutable nxMarketDepth _depth;  // the same, once it is kept
    mutable bool _keepsDepth = false;
    nxBySide<Sizes> _sizes;
    nxDailyFigures _daily;
    nxProductStateBitMask _state;
    nxPriceTradeVolumes _volumes;
    nxVolume _traded;              // by the latest event
    bool _volumesCleared = false;  // by the latest event
    bool _hasDepth = false;
    std::optional<long long> _day;  // since 1970, of the latest trade
};
