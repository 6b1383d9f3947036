#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/jobs/nxHostProduct.h"
#include "host/jobs/nxQuietJobInterface.h"
#include "scriptFramework/job/nxAlgoJobObject.h"

class nxHostServices;

// One job of the reference host: the script's job object, the products it asked for, and the bridge from the
// script to the server. Owned by the server, used on the replay's thread.
class nxHostJob : public nxQuietJobInterface
{
public:
    nxHostJob(nxHostServices& services, std::string name);

    const std::string& GetName() const { return _name; }
    nxAlgoJobObject& GetObject() { return _object; }
    const std::map<std::string, std::unique_ptr<nxHostProduct>>& GetProducts() const { return _products; }
    bool HasSubscribed() const { return _subscribed; }

    nxAlgoProductObject* GetProduct(const std::string& productName) override;
    nxErrorEnum SubscribePrices(nxAlgoProductObject*) override;
    nxErrorEnum UnsubscribePrices(nxAlgoProductObject*) override;
    nxErrorEnum SubscribePrice(nxAlgoProductObject*) override;
    nxErrorEnum UnsubscribePrice(nxAlgoProductObject*) override;
    nxErrorEnum SubscribeMarketDepth(nxAlgoProductObject*) override;
    nxErrorEnum UnsubscribeMarketDepth(nxAlgoProductObject*) override;
    nxErrorEnum SubscribeState(nxAlgoProductObject*) override;
    nxErrorEnum UnsubscribeState(nxAlgoProductObject*) override;
    void LogText(const std::string& text) override;
    void StartTimer(const std::string& name, unsigned int milliseconds) override;
    void StopTimer(const std::string& name) override;
    void Shutdown() override;
    bool IsActive() const override { return _object.IsActive(); }
    bool IsInOnInit() override { return _inOnInit; }
    const std::string& GetLogPrefix() const override { return _logPrefix; }

    [[nodiscard]] nxErrorEnum Start();

private:
    // Adds to what the product's events are wanted for.
    nxErrorEnum _Want(nxAlgoProductObject* product, int price, int depth, int state);

    nxHostServices& _services;
    std::string _name;
    std::string _logPrefix;
    bool _inOnInit = false;
    bool _subscribed = false;
    // The products outlive the script, whose finalizers may still use them.
    std::map<std::string, std::unique_ptr<nxHostProduct>> _products;
    nxAlgoJobObject _object;
};
