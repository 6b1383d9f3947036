#pragma once

#include <string>

#include "host/feed/nxProductDescription.h"

class nxHostJob;
class nxHostProduct;
class nxMarketProduct;

// What a job needs of the server around it. Calls come on the replay's thread, from inside a callback.
class nxHostServices
{
public:
    // The market of a product; null when neither the data nor a description knows the name.
    virtual nxMarketProduct* FindMarket(const std::string& name) = 0;
    // Tells the product what is known of it: tick size, point value, exchange.
    virtual void Describe(nxHostProduct& product) = 0;
    virtual void LogText(nxHostJob& job, const std::string& text) = 0;
    virtual void StartTimer(nxHostJob& job, const std::string& name, unsigned int milliseconds) = 0;
    virtual void StopTimer(nxHostJob& job, const std::string& name) = 0;
    virtual void NoteShutdown(nxHostJob& job) = 0;
    virtual void NoteUnknownProduct(nxHostJob& job, const std::string& name) = 0;
    // A script asked for a product's events.
    virtual void NoteSubscription(nxHostProduct& product) = 0;

protected:
    ~nxHostServices() = default;
};
