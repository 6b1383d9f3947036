#pragma once

#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/records/nxVorantJobStatus.h"
#include "host/accounts/nxTradingStatistics.h"
#include "host/jobs/nxHostOrder.h"
#include "host/jobs/nxHostOrders.h"
#include "host/jobs/nxHostProduct.h"
#include "host/jobs/nxHostServices.h"
#include "host/jobs/nxJobOptions.h"
#include "host/jobs/nxWatchedJobs.h"
#include "scriptFramework/job/nxAlgoJobObject.h"
#include "scriptFramework/job/nxQuietJobInterface.h"

// One job of the reference host: the script's job object, what it was started with, the products it asked
// for, what it shows to the jobs that watch it, and the bridge from the script to the server. Owned by the
// server, used on the replay's thread.
class nxHostJob : public nxQuietJobInterface
{
public:
    // What changed for those that watch the job.
    struct Changes
    {
        bool status = false;  // user texts, user state
        bool rest = false;    // output parameters, reference, selection
    };

    // The index counts the jobs of a run from 0. The options' account is also the owner that others see.
    nxHostJob(const nxHostServices& services, const nxJobOptions& options, unsigned int index,
              const std::string& logName);

    const std::string& GetName() const { return _options.name; }
    unsigned int GetIndex() const { return _index; }
    // Until Close.
    nxAlgoJobObject& GetObject() { return *_object; }
    // Ends the script, whose finalizers may still use this job and those that it watches.
    void Close() { _object.reset(); }
    const std::map<std::string, std::unique_ptr<nxHostProduct>>& GetProducts() const { return _products; }
    // Null for one that the script has not asked for.
    nxHostProduct* FindProduct(const std::string& name) const
    {
        const auto known = _products.find(name);
        return known == _products.end() ? nullptr : known->second.get();
    }
    bool HasSubscribed() const { return _subscribed; }
    void NoteSubscribed() { _subscribed = true; }
    const nxJobOptions& GetOptions() const { return _options; }

    [[nodiscard]] nxErrorEnum Start();
    // Between a start that succeeded and the end.
    bool IsRunning() const { return _running; }
    void SetRunning(bool running) { _running = running; }
    // A value that the job's own parameter of that name refuses leaves it alone; null when it is taken.
    [[nodiscard]] std::optional<std::string> ChangeParameter(const std::string& name,
                                                             const std::string& value)
    {
        return _options.parameters.Change(name, value);
    }

    // The other jobs as this one's script sees them; null until it has asked.
    nxWatchedJobs* GetWatchedJobs() { return _watchedJobs.get(); }
    // What changed since the last call.
    Changes TakeChanges() { return std::exchange(_changes, {}); }
    const nxVorantJobStatus& GetStatus();
    const std::string& GetReference() const { return _reference; }

    const nxHostServices& GetServices() const { return _services; }
    // In the order in which they came to be; they stay.
    const std::vector<std::unique_ptr<nxHostOrder>>& GetOwnOrders() const { return _orders; }
    // Of a bracket's order, when the exchange tells of it.
    nxHostOrder& AddChild(const nxExchangeOrder& child, nxHostOrder& parent);
    void NoteRequest(const nxHostOrder& order);
    void AddFill(nxHostProduct& product, nxSide side, const nxExchangeEvent& fill);
    // The market of a product that the job traded may have moved.
    void Revalue(nxHostProduct& product);
    bool HasOpenOrders(const nxHostProduct& product) const;
    // Its orders stay in the market when it ends.
    bool ShattersOnExit() const { return _shatters; }
    // Sends what closes the job's position in the product, if there is one.
    void Close(nxHostProduct& product, bool atOnce);
    // How the positions that were to be closed on exit ended; `why` tells it of one that is open.
    std::vector<std::string> DescribeExits(const std::function<std::string(const nxHostProduct&)>& why);
    const nxTradingStatistics& GetTrading();
    nxHostOrder::ShownRecord& GetShownRecord() { return _shownRecord; }
    bool IsCrossProtected() const { return _crossProtected; }
    const std::string& GetOrderUserString() const { return _orderUserString; }
    const std::string& GetOrderUserString2() const { return _orderUserString2; }

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
    // Starts or stops one trade window of a product.
    void WantTrades(nxHostProduct& product, int change);
    void StartEventWindowTimer(nxAlgoEventWindowObject* window, double seconds) override;
    void StopEventWindowTimer(nxAlgoEventWindowObject* window) override;
    void OnEventWindow(nxAlgoEventWindowObject& window) override;
    nxAlgoDataSeriesObject* CreateDataSeries() override;
    nxAlgoLibraryObject* LoadLibrary(const std::string& name) override;

    void LogText(const std::string& text) override;
    void SendUserState(const nxLogLevelEnum& level, const std::string& text) override;
    void SendUserText1(const std::string& text) override;
    void SendUserText2(const std::string& text) override;
    void SendUserText3(const std::string& text) override;
    bool SendUserLog(const std::map<std::string, std::string>& fields, std::string& error) override;
    bool SetParameter(const std::string& name, const std::string& value) override;
    void PublishParameter(const std::string& name, const std::string& value) override;
    void SendParameter(const std::string& tag, const std::string& name, const std::string& value) override;
    std::string GetDynamicParameter(const std::string& tag, std::string name) override;
    void StartTimer(const std::string& name, unsigned int milliseconds) override;
    void StopTimer(const std::string& name) override;
    void Shutdown() override;
    void SetTag(const std::string& tag) override;
    std::string GetTag() override { return _tag; }
    void SetReference(const std::string& text) override;
    void SetOrderUserString(const std::string& text) override;
    void SetOrderUserString2(const std::string& text) override;
    void SetShatterOnExit(bool on) override;
    void SetEnableCrossProtection(bool on) override;
    void SetDisableParentFills(bool on) override;
    void SetDisableReport(bool on) override;
    void SetEnablePandL(bool on) override;
    bool SetChartLine(const std::string& chart, const std::string& line, double value,
                      unsigned int colour) override;
    bool RemoveChartLine(const std::string& chart, const std::string& line) override;

    nxVorantParameter* GetParameter(const std::string& id) const override;
    bool HasContext() override { return _options.selection.has_value(); }
    std::string GetSelectedProduct() override { return _selection.product; }
    unsigned int GetSelectedVolume() const override;
    double GetSelectedPrice() const override { return _selectedPrice; }
    std::string GetSelectedSide() override { return _selection.side; }
    std::string GetSelectedSpreadSpec() override { return _selection.spread; }
    void SetSelectedPrice(const double& price) override;
    std::string GetAccount() override { return _options.account; }

    nxVolume GetID() override { return _index + 1; }
    nxAlgoVorantJobCollectionObject* GetVorantJobs() override;
    nxAlgoDataStoreObject* GetDataStore(const std::string& name, bool create) override;
    bool IsActive() const override { return _object && _object->IsActive(); }
    bool IsInOnInit() override { return _inOnInit; }
    const std::string& GetLogPrefix() const override { return _logPrefix; }

    // The selection as it stands now: a script may set its price. Empty without a context.
    const nxJobSelection& GetSelection() const { return _selection; }

private:
    // Adds to what the product's events are wanted for.
    nxErrorEnum _Want(nxAlgoProductObject* product, std::initializer_list<nxMarketEvent> events, int change);
    void _SendUserText(const char* type, void (nxVorantJobStatus::*set)(const std::string&),
                       const std::string& (nxVorantJobStatus::*get)() const, const std::string& text);
    void _Value(nxHostProduct& product, const nxDecimal& mark);
    void _RecordFlag(const char* name, bool on);
    void _NoteChange(bool& change);

    const nxHostServices _services;
    nxJobOptions _options;
    unsigned int _index;
    std::string _logPrefix;
    bool _inOnInit = false;
    bool _running = false;
    bool _subscribed = false;
    nxJobSelection _selection;
    double _selectedPrice = 0.0;  // as the script set it, which may be no decimal
    std::string _tag;
    std::string _reference;
    nxVorantJobStatus _status;  // its output parameters are behind while _outputsJoined is false
    std::map<std::string, std::string> _outputs;
    bool _outputsJoined = true;
    Changes _changes;
    std::string _error;  // the latest refusal
    std::string _orderUserString, _orderUserString2;
    bool _crossProtected = false;
    bool _shatters = false;
    unsigned int _requestCount = 0;
    nxTradingStatistics _trading;
    nxHostOrder::ShownRecord _shownRecord;
    // What the script holds outlives it, since its finalizers may still use it.
    std::map<std::string, std::unique_ptr<nxHostProduct>> _products;
    std::vector<std::unique_ptr<nxHostOrder>> _orders;
    std::map<unsigned int, std::unique_ptr<nxHostOrder>> _foreignOrders;  // by number, as looked at
    nxHostOrders _allOrders{*this, false};
    nxHostOrders _jobOrders{*this, true};
    std::vector<std::unique_ptr<nxAlgoObject>> _made;  // data series and native libraries
    std::unique_ptr<nxWatchedJobs> _watchedJobs;
    std::optional<nxAlgoJobObject> _object;
};
