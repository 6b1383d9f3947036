#pragma once

#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/jobs/nxHostProduct.h"
#include "host/jobs/nxReportingJob.h"

// What a job sees of the markets: the products that its script asked for, which of their events it wants, and
// what it computes from them. Used on the run's thread.
class nxMarketJob : public nxReportingJob
{
public:
    using nxReportingJob::nxReportingJob;

    const std::map<std::string, std::unique_ptr<nxHostProduct>>& GetProducts() const { return _products; }
    // Null for one that the script has not asked for.
    nxHostProduct* FindProduct(const std::string& name) const
    {
        const auto known = _products.find(name);
        return known == _products.end() ? nullptr : known->second.get();
    }
    bool HasSubscribed() const { return _subscribed; }
    void NoteSubscribed() { _subscribed = true; }
    // Starts or stops one trade window of a product.
    void WantTrades(nxHostProduct& product, int change);

    nxAlgoProductObject* GetProduct(const std::string& productName) override;
    nxErrorEnum SubscribePrices(nxAlgoProductObject*) override;
    nxErrorEnum UnsubscribePrices(nxAlgoProductObject*) override;
    nxErrorEnum SubscribePrice(nxAlgoProductObject*) override;
    nxErrorEnum UnsubscribePrice(nxAlgoProductObject*) override;
    nxErrorEnum SubscribeMarketDepth(nxAlgoProductObject*) override;
    nxErrorEnum UnsubscribeMarketDepth(nxAlgoProductObject*) override;
    nxErrorEnum SubscribeState(nxAlgoProductObject*) override;
    nxErrorEnum UnsubscribeState(nxAlgoProductObject*) override;
    nxErrorEnum SubscribePriceTradeVolumes(nxAlgoProductObject*) override;
    nxErrorEnum UnsubscribePriceTradeVolumes(nxAlgoProductObject*) override;
    nxErrorEnum SubscribePositions(nxAlgoProductObject*) override;
    nxErrorEnum UnsubscribePositions(nxAlgoProductObject*) override;

    void OnTickData(nxAlgoTickDataObject& tick) override;
    void StartEventWindowTimer(nxAlgoEventWindowObject* window, double seconds) override;
    void StopEventWindowTimer(nxAlgoEventWindowObject* window) override;
    void OnEventWindow(nxAlgoEventWindowObject& window) override;
    nxAlgoDataSeriesObject* CreateDataSeries() override;
    nxAlgoLibraryObject* LoadLibrary(const std::string& name) override;

private:
    // Adds to what the product's events are wanted for.
    nxErrorEnum _Want(nxAlgoProductObject* product, std::initializer_list<nxMarketEvent> events, int change);

    bool _subscribed = false;
    std::map<std::string, std::unique_ptr<nxHostProduct>> _products;
    std::vector<std::unique_ptr<nxAlgoObject>> _made;  // data series and native libraries
};
