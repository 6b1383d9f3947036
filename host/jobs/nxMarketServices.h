#pragma once

#include <string>

class nxLaunchedJob;
class nxHostProduct;
enum class nxMarketEvent;
struct nxMarket;

// What a job needs of the markets around it. Calls come on the run's thread, from inside a callback.
class nxMarketServices
{
public:
    // Null when neither the data nor a description knows the name. It stays for the run.
    virtual const nxMarket* FindMarket(const std::string& name) = 0;
    // A product of a job was made; gives it its account.
    virtual void NoteProduct(nxHostProduct& product) = 0;
    virtual void NoteUnknownProduct(nxLaunchedJob& job, const std::string& name) = 0;
    // A script asked for a product's events.
    virtual void NoteSubscription(nxLaunchedJob& job, nxHostProduct& product, nxMarketEvent event) = 0;

protected:
    ~nxMarketServices() = default;
};
