#pragma once

#include <functional>
#include <string>

class nxAlgoEventWindowObject;
class nxAlgoTickDataObject;
struct nxBarOrigin;
struct nxBarTerms;
struct nxFeedEvent;
class nxLaunchedJob;
class nxHostProduct;
class nxHostTickDataCollection;

// What the collections and trade windows of a job need of the run around it. Calls come on the replay's
// thread, from inside a callback or while a collection is fed.
class nxBarServices
{
public:
    // The rule of a period by a name that not every host knows; null: nor does this run.
    virtual const nxBarTerms* FindBarTerms(const std::string& period) const = 0;
    // What the data of the run holds for the product's bars.
    virtual nxBarOrigin GetBarOrigin(const nxHostProduct& product) = 0;
    // How many events were replayed so far, over all products.
    virtual unsigned long long GetEventCount() const = 0;
    // Gives those of the product among them once more, read from the files anew, so that nothing is kept for
    // what nobody asks for. Nothing of data that cannot be read twice, which the job's log then tells.
    virtual void ReadHistory(const nxHostProduct& product,
                             const std::function<void(const nxFeedEvent&)>& take) = 0;
    // From now on the collection is fed, until it is detached.
    virtual void AttachCollection(nxHostTickDataCollection& collection) = 0;
    virtual void DetachCollection(nxHostTickDataCollection& collection) = 0;
    // The bar under construction changed.
    virtual void DeliverTickData(nxLaunchedJob& job, nxAlgoTickDataObject& tick) = 0;
    // A trade window of the job has news. The one call that comes outside of the job's callbacks.
    virtual void DeliverWindow(nxLaunchedJob& job, nxAlgoEventWindowObject& window) = 0;

protected:
    ~nxBarServices() = default;
};
