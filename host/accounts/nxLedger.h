#pragma once

#include <utility>
#include <vector>

#include "host/accounts/nxLedgerObserver.h"
#include "host/accounts/nxProductAccount.h"
#include "host/accounts/nxTradingStatistics.h"
#include "host/exchange/nxExchangeObserver.h"
#include "host/feed/nxFeedEvent.h"

// What the orders of the jobs of a run came to, as an onlooker books it: each fill when the exchange makes
// it, whenever the script is told, and what is open at the market's price once all fills of a row are booked.
// So a profit or a drawdown is never that of a position that was not held. Used on the run's thread.
class nxLedger : public nxExchangeObserver
{
public:
    // Outlives the ledger.
    explicit nxLedger(nxLedgerObserver* observer = nullptr) : _observer(observer) {}

    // In the order of the exchange's numbers of them. `none` is an account with nothing in it; the market
    // outlives the ledger.
    void AddProduct(const nxProductAccount& none, const nxMarketProduct& market)
    {
        _products.push_back({none, &market, {}});
    }
    // Of the fill that was booked last, for those who look on after the ledger.
    const nxExactAmount& GetLastFee() const { return _lastFee; }

    // Values what was filled since the last call.
    void Settle()
    {
        if (!_filled.empty()) [[unlikely]]
            _ValueFilled();
    }
    // The market of a product may have moved. bar: by that one, else null.
    void Mark(unsigned int product, const nxFeedBar* bar);

    struct AdjustedJob
    {
        unsigned int job;
        nxAdjusted adjusted;
    };
    // Of each job with a position; it is valued at the price of afterwards until the market shows one.
    std::vector<AdjustedJob> Adjust(unsigned int product, const nxAdjustment& adjustment);

    // Of a job that was filled in the product.
    const nxProductAccount& GetAccount(unsigned int job, unsigned int product) const;
    struct Position
    {
        long long net;
        nxDecimal mark;  // by which it was valued last
    };
    Position GetPosition(unsigned int job, unsigned int product) const;
    nxExactAmount GetProfit(unsigned int job, const nxCurrencyEnum& currency) const;
    // Without orders, which the ledger does not count.
    nxTradingStatistics GetStatistics(unsigned int job) const;

    void OnEvent(const nxExchangeOrder& order, const nxExchangeEvent& event,
                 const nxMarketProduct& market) override;

private:
    // What one job has of a product, and the profit that the job's money counts of it.
    struct Holding
    {
        unsigned int job;
        nxProductAccount account;
        nxDecimal mark;
        nxExactAmount profit;
        bool isFilled;  // since it was valued
    };
    struct Product
    {
        nxProductAccount none;
        const nxMarketProduct* market;
        std::vector<Holding> holdings;
    };

    Holding& _Get(unsigned int job, unsigned int product);
    void _ValueFilled();
    void _MeetBar(const Holding& holding, unsigned int product, const nxFeedBar& bar);
    void _Value(Holding& holding, unsigned int product, const nxDecimal& mark);

    nxLedgerObserver* const _observer;
    std::vector<Product> _products;
    std::vector<nxTradingStatistics> _jobs;
    nxExactAmount _lastFee;
    std::vector<std::pair<unsigned int, unsigned int>> _filled;  // job and product; not valued yet
};
