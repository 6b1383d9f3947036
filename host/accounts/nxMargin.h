#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "host/accounts/nxLedger.h"
#include "host/exchange/nxOrderGate.h"
#include "host/market/nxProductDescription.h"

enum class nxMarginRule { Off, Tell, Refuse };

// What the jobs' positions and orders need of their capital, and what of it is free. Each job has the capital
// for itself, and in each currency that it trades, since the run knows no rates between them. Products whose
// margin is not known need none. Used on the run's thread.
class nxMargin : public nxExchangeObserver, public nxOrderGate
{
public:
    // The ledger outlives it, and is told of events before it.
    nxMargin(const nxLedger& ledger, const nxDecimal& capital, nxMarginRule rule)
        : _ledger(ledger), _capital(capital), _rule(rule)
    {
    }

    // In the order of the exchange's numbers. The market outlives it.
    void AddProduct(const nxProductDescription& product, const nxMarketProduct& market)
    {
        _products.push_back({product, &market, {}});
    }
    // After the ledger has valued what is held of the product.
    void Look(unsigned int product, long long time);
    // What to say of a job at the end of the run.
    std::vector<std::string> GetNotes(unsigned int job) const;

    void OnEvent(const nxExchangeOrder& order, const nxExchangeEvent& event,
                 const nxMarketProduct& market) override;
    std::string FindObstacle(const nxExchangeOrder& order) override;

private:
    using Lots = nxBySide<long long>;
    struct Product
    {
        nxProductDescription terms;
        const nxMarketProduct* market;
        std::vector<Lots> working;  // of the orders that are alive, by job
    };
    struct Job
    {
        unsigned long long beyond = 0;  // orders and amendments
        unsigned long long breaches = 0;
        long long firstBeyond = 0, firstBreach = 0;
        std::string beyondText, breachText;  // of the first
        bool isBreached = false;
    };

    Lots& _GetWorking(Product& product, unsigned int job) const;
    Job& _GetJob(unsigned int job);
    nxExactAmount _GetEquity(unsigned int job, const nxCurrencyEnum& currency) const;
    nxExactAmount _GetInitial(unsigned int job, const nxCurrencyEnum& currency);
    nxExactAmount _GetMaintenance(unsigned int job, const nxCurrencyEnum& currency) const;

    const nxLedger& _ledger;
    const nxDecimal _capital;
    const nxMarginRule _rule;
    std::vector<Product> _products;
    std::unordered_map<unsigned int, unsigned int> _remaining;  // that count as working, by order
    std::vector<Job> _jobs;
};
