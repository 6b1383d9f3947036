#pragma once

#include <boost/container/deque.hpp>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/accounts/nxTradingStatistics.h"
#include "host/jobs/nxForeignOrder.h"
#include "host/jobs/nxHostOrder.h"
#include "host/jobs/nxHostOrders.h"
#include "host/jobs/nxMarketJob.h"

// What a job trades: its orders, what they came to, and what becomes of its positions when it ends. Used on
// the run's thread.
class nxTradingJob : public nxMarketJob
{
public:
    using nxMarketJob::nxMarketJob;
    // What stays where it is, many side by side: a run may make millions.
    template <class T>
    using Kept =
        boost::container::deque<T, void, boost::container::deque_options_t<boost::container::block_size<32>>>;
    using Orders = Kept<nxHostOrder>;

    // In the order in which they came to be; they stay.
    const Orders& GetOwnOrders() const { return _orders; }
    Orders& GetOwnOrders() { return _orders; }
    // Of a bracket's order, when the exchange tells of it.
    nxHostOrder& AddChild(const nxExchangeOrder& child, nxHostOrder& parent);
    void NoteRequest(const nxHostOrder& order);
    nxAlgoOrderUpdateObject& MakeUpdate(const nxHostOrder& order)
    {
        return _updates.emplace_back(this, &order);
    }
    nxHostOrder::ShownRecord& GetShownRecord() { return _shownRecord; }
    bool IsCrossProtected() const { return _crossProtected; }
    const std::string& GetOrderUserString() const { return _orderUserString; }
    const std::string& GetOrderUserString2() const { return _orderUserString2; }

    // Orders, with the children of brackets.
    bool HasOpenOrders(const nxHostProduct& product) const;
    // Its orders stay in the market when it ends.
    bool ShattersOnExit() const { return _shatters; }
    // Sends what closes the job's position in the product, if there is one.
    void ClosePosition(nxHostProduct& product, bool atOnce);
    // How the positions that were to be closed on exit ended; `why` tells it of one that is open.
    std::vector<std::string> DescribeExits(const std::function<std::string(const nxHostProduct&)>& why);

    nxAlgoOrderObject* CreateOrder(nxAlgoProductObject* product, const std::string& side,
                                   const std::string& type, const std::string& exec, const std::string& time,
                                   const std::string& spreadSpec) override;
    nxAlgoOrderObject* GetOrder(unsigned int id) override;
    nxAlgoOrderCollectionObject* GetOrders() override { return &_allOrders; }
    nxAlgoOrderCollectionObject* GetJobOrders() override { return &_jobOrders; }
    // Requests sent to the exchange.
    unsigned int GetTransactionCount() override { return _requestCount; }
    void SetError(const std::string& text) override { _error = text; }
    std::string GetError() override { return _error; }
    // Realised and open, less fees, over the products of that currency.
    nxDecimal GetPandL(const nxCurrencyEnum& currency) override;
    void SetOrderUserString(const std::string& text) override;
    void SetOrderUserString2(const std::string& text) override;
    void SetShatterOnExit(bool on) override;
    void SetEnableCrossProtection(bool on) override;

private:
    std::string _error;  // the latest refusal
    std::string _orderUserString, _orderUserString2;
    bool _crossProtected = false;
    bool _shatters = false;
    unsigned int _requestCount = 0;
    nxHostOrder::ShownRecord _shownRecord;
    Orders _orders;
    Kept<nxAlgoOrderUpdateObject> _updates;  // of those of which the script was told something
    std::map<unsigned int, std::unique_ptr<nxForeignOrder>> _foreignOrders;  // by number, as looked at
    nxHostOrders _allOrders{*this, false};
    nxHostOrders _jobOrders{*this, true};
};
