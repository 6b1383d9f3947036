#pragma once

#include <string>
#include <vector>

#include "host/market/nxProductDescription.h"
#include "host/report/nxRunRecord.h"

class nxAlgoEventWindowObject;
class nxBarServices;
class nxAlgoDataStoreObject;
class nxHostJob;
class nxHostOrder;
class nxHostProduct;
enum class nxMarketEvent;
class nxMarketProduct;
class nxSimulatedExchange;
class nxTimerCallback;

// What a job needs of the server around it. Calls come on the replay's thread, from inside a callback.
class nxHostServices
{
public:
    // The market of a product; null when neither the data nor a description knows the name.
    virtual nxMarketProduct* FindMarket(const std::string& name) = 0;
    // Tells the product what is known of it: tick size, point value, exchange.
    virtual void Describe(nxHostProduct& product) = 0;
    // A line for the person who watches the run.
    virtual void LogText(nxHostJob& job, const std::string& text) = 0;
    // One entry of the run's record. The fields are read before it returns.
    virtual void Record(const nxHostJob& job, const char* type, nxRunRecord::Fields fields) = 0;
    virtual void StartTimer(nxHostJob& job, const std::string& name, unsigned int milliseconds) = 0;
    virtual void StopTimer(nxHostJob& job, const std::string& name) = 0;
    virtual void StartTimer(nxHostJob& job, nxTimerCallback& callback, double seconds) = 0;
    virtual void StopTimer(nxHostJob& job, nxTimerCallback& callback) = 0;
    // A trade window of the job has news. The one call that comes outside of the job's callbacks.
    virtual void DeliverWindow(nxHostJob& job, nxAlgoEventWindowObject& window) = 0;
    virtual void NoteShutdown(nxHostJob& job) = 0;
    // The job has news for those that watch it, to be taken when the callback has returned.
    virtual void NoteChange(nxHostJob& job) = 0;
    virtual void NoteUnknownProduct(nxHostJob& job, const std::string& name) = 0;
    // A script asked for a product's events.
    virtual void NoteSubscription(nxHostJob& job, nxHostProduct& product, nxMarketEvent event) = 0;
    // The jobs of the run in their order, without the one that asks.
    virtual std::vector<nxHostJob*> GetOtherJobs(const nxHostJob& job) = 0;
    // Ends a job when the running callback has returned. An error for one that has ended.
    [[nodiscard]] virtual nxErrorEnum StopJob(nxHostJob& job, const nxHostJob& by) = 0;
    // The board of named values that all jobs share, by tag and name; "" where nothing stands.
    virtual std::string GetDynamicParameter(const std::string& tag, const std::string& name) = 0;
    virtual void SetDynamicParameter(const std::string& tag, const std::string& name,
                                     const std::string& value) = 0;

    // One for all jobs; null when there is none of that name or it cannot be had.
    virtual nxAlgoDataStoreObject* GetDataStore(nxHostJob& job, const std::string& name, bool create) = 0;

    // The recorded time, in nanoseconds since 1970.
    virtual long long GetTime() const = 0;
    // The number of a new order; from the first one on there is an exchange.
    virtual unsigned int ReserveOrder() = 0;
    virtual bool HasExchange() const = 0;
    virtual nxSimulatedExchange& GetExchange() = 0;
    virtual unsigned int GetExchangeProduct(const nxHostProduct& product) = 0;
    // The order exists; to be called once, under its number.
    virtual void NoteOrder(nxHostOrder& order) = 0;
    // Null for a number that no job knows of.
    virtual nxHostOrder* FindOrder(unsigned int id) = 0;
    // Of all jobs, in the order in which they came to be.
    virtual const std::vector<nxHostOrder*>& GetOrders() const = 0;
    // Something was sent to the exchange, to be carried out when the callback has returned.
    virtual void NoteRequest(nxHostJob& job) = 0;
    // False for a job that has ended.
    virtual bool MayTrade(const nxHostJob& job) = 0;
    virtual bool IsRecording() const = 0;
    virtual nxBarServices& GetBars() = 0;

protected:
    ~nxHostServices() = default;
};
