#pragma once

#include <deque>
#include <functional>
#include <utility>
#include <vector>

#include "host/accounts/nxLedgerObserver.h"
#include "host/accounts/nxProductAccount.h"
#include "host/exchange/nxExchangeObserver.h"
#include "host/results/nxLotBook.h"
#include "host/results/nxMarkouts.h"
#include "host/results/nxResultAccount.h"

// Makes the data of a run's measures while it goes on: round trips, equity, days, slippage and markouts of
// each job and currency with orders. What it keeps grows with round trips, orders and days, not with the
// data. Used on the run's thread, from the first order on.
class nxResultCollector : public nxExchangeObserver, public nxLedgerObserver
{
public:
    struct Options
    {
        double capital = 0.0;  // 0: none
        nxMatching matching = nxMatching::Fifo;
        bool hasManyJobs = false;
    };
    using Prices = std::vector<std::pair<unsigned int, double>>;  // by product
    // All of them may be empty.
    struct Listeners
    {
        std::function<void(unsigned int job, const nxRoundTrip&)> onTrip;
        // prices: of the products in which the job has sent orders, at the end of the day. Days before a
        // job's first order come with it, without prices.
        std::function<void(const nxResultData&, const nxResultDay&, const Prices& prices)> onDay;
        std::function<void(const nxResultData&, long long time, const nxEquityBucket&)> onEquity;
    };

    nxResultCollector(const Options& options, Listeners listeners)
        : _options(options), _listeners(std::move(listeners))
    {
        constexpr std::size_t enough = 4096;  // days until the first allocation
        _days.reserve(enough);
    }

    // In the order of the exchange's numbers of them; the market outlives the collector.
    void AddProduct(const nxProductAccount& none, const nxMarketProduct& market);
    // A row of that time meets the orders next.
    void BeginRow(unsigned int product, long long time)
    {
        _time = time;
        _products[product].markouts.Settle(time, _products[product].mid);
    }
    // Once it is settled.
    void EndRow(unsigned int product)
    {
        if (!_products[product].markouts.IsEmpty()) [[unlikely]]
            _KeepMid(_products[product]);
    }
    // The UTC day is over. hasData: it had rows.
    void EndDay(long long day, bool hasData);
    // Nothing more will come; last: the time of the last row.
    void Finish(long long last);

    const std::vector<long long>& GetDays() const { return _days; }
    // Those so far were no part of the run. Before the first order.
    void ForgetDays() { _days.clear(); }
    // Of any job, in the product.
    bool HasOrders(unsigned int product) const { return !_products[product].holdings.empty(); }
    // In the order of jobs and of the currencies' first orders; then those of all jobs together, where
    // several have traded a currency. Once.
    std::vector<nxResultData> TakeResults();
    // At what price the market stood when the order was sent; null where there was none, and once the order
    // is over.
    nxDecimal GetDecisionPrice(unsigned int order) const;

    void OnRequest(const nxExchangeOrder& order, nxOrderRequest request, const nxOrderTerms& terms,
                   const nxMarketProduct& market, long long sent, long long due) override;
    void OnEvent(const nxExchangeOrder& order, const nxExchangeEvent& event,
                 const nxMarketProduct& market) override;
    // The ledger books a fill before the exchange's other observers hear of it.
    void OnFill(const nxExchangeOrder&, const nxExchangeEvent&, const nxExactAmount& fee) override
    {
        _fee = fee;
    }
    void OnValue(unsigned int job, unsigned int product, const nxPositionKeeper& position,
                 const nxDecimal& mark, const nxTradingStatistics::Money& money) override;
    void OnAdjustment(unsigned int job, unsigned int product, const nxAdjustment& adjustment) override;
    void OnBar(unsigned int job, unsigned int product, const nxFeedBar& bar) override;

private:
    struct Holding
    {
        unsigned int job;
        nxResultAccount* account;
        nxLotBook lots;
        nxExactAmount exposure;
        bool isOpen = false;
        nxExactAmount turnover;
    };
    struct Product
    {
        nxCurrencyEnum currency;
        nxDecimal pointValue;
        const nxMarketProduct* market;
        nxMarkouts markouts;
        nxDecimal mid;               // while markouts wait for it
        std::vector<double> closes;  // of the days since it is known
        std::deque<Holding> holdings;
    };
    // One that may still be filled.
    struct Order
    {
        long long mantissa = 0;  // of the price at which the market stood when it was sent
        unsigned int volume = 0;
        unsigned char places = 0;
        bool hasDecision = false;
        bool isOver = false;
    };

    Holding& _Get(unsigned int job, unsigned int product);
    nxResultAccount& _GetAccount(std::optional<unsigned int> job, const nxCurrencyEnum& currency);
    Order& _GetOrder(unsigned int number);
    void _EndOrder(unsigned int number);
    void _AddFill(const nxExchangeOrder& order, const nxExchangeEvent& fill);
    void _NoteDecision(unsigned int number, const nxDecimal& price);
    void _NoteVolume(const nxExchangeOrder& order, unsigned int volume);
    static void _KeepMid(Product& product);
    void _See(nxResultAccount& account, const nxExactAmount& profit);
    void _TakeTrip(const Holding& holding, nxRoundTrip&& trip);
    Prices _GetPrices(const nxResultAccount& account) const;
    void _ChooseBenchmark(nxResultAccount& account) const;

    const Options _options;
    const Listeners _listeners;
    std::vector<Product> _products;
    nxResultAccounts _accounts;
    std::deque<Order> _orders;      // by number; those in front of the first that is not over are gone
    unsigned int _endedOrders = 1;  // that are gone, with the number 0, which no order has
    std::vector<long long> _days;
    long long _time = 0;
    nxExactAmount _fee;  // of the fill that was just booked
};
