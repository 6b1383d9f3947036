#include "host/jobs/nxHostJob.h"

#include "host/jobs/nxHostServices.h"

nxHostJob::nxHostJob(nxHostServices& services, const nxJobOptions& options, unsigned int index,
                     const std::string& logName)
    : _services(services),
      _options(options),
      _index(index),
      _logPrefix("[" + logName + "] "),
      _selection(options.selection.value_or(nxJobSelection())),
      _selectedPrice(_selection.price.IsValid() ? _selection.price.GetAsDouble() : 0.0),
      _object(std::in_place, this)
{
    _status.SetJobID(index + 1);
    _status.SetJobName(options.name);
    _status.SetScriptName(options.script);
}

nxErrorEnum nxHostJob::Start()
{
    _inOnInit = true;
    const nxErrorEnum error = _object->StartJob();
    _inOnInit = false;
    return error;
}

nxAlgoVorantJobCollectionObject* nxHostJob::GetVorantJobs()
{
    if (_watchedJobs == nullptr) _watchedJobs = std::make_unique<nxWatchedJobs>(_services, *this);
    return _watchedJobs.get();
}

nxAlgoProductObject* nxHostJob::GetProduct(const std::string& productName)
{
    const auto known = _products.find(productName);
    if (known != _products.end()) return known->second.get();
    const nxMarketProduct* market = _services.FindMarket(productName);
    if (market == nullptr) {
        _services.NoteUnknownProduct(*this, productName);
        return nullptr;
    }
    const auto id = static_cast<unsigned int>(_products.size() + 1);
    std::unique_ptr<nxHostProduct>& product = _products[productName];
    product = std::make_unique<nxHostProduct>(this, *market, id);
    _services.Describe(*product);
    return product.get();
}

nxErrorEnum nxHostJob::_Want(nxAlgoProductObject* object, int price, int depth, int state)
{
    auto& product = static_cast<nxHostProduct&>(*object);  // every product of the job is one
    product.wantsPrice += price;
    product.wantsDepth += depth;
    product.wantsState += state;
    if (price > 0 || depth > 0 || state > 0) {
        _subscribed = true;
        _services.NoteSubscription(*this, product);
    }
    return {};
}

nxErrorEnum nxHostJob::SubscribePrices(nxAlgoProductObject* product)
{
    return _Want(product, 1, 1, 0);
}

nxErrorEnum nxHostJob::UnsubscribePrices(nxAlgoProductObject* product)
{
    return _Want(product, -1, -1, 0);
}

nxErrorEnum nxHostJob::SubscribePrice(nxAlgoProductObject* product)
{
    return _Want(product, 1, 0, 0);
}

nxErrorEnum nxHostJob::UnsubscribePrice(nxAlgoProductObject* product)
{
    return _Want(product, -1, 0, 0);
}

nxErrorEnum nxHostJob::SubscribeMarketDepth(nxAlgoProductObject* product)
{
    return _Want(product, 0, 1, 0);
}

nxErrorEnum nxHostJob::UnsubscribeMarketDepth(nxAlgoProductObject* product)
{
    return _Want(product, 0, -1, 0);
}

nxErrorEnum nxHostJob::SubscribeState(nxAlgoProductObject* product)
{
    return _Want(product, 0, 0, 1);
}

nxErrorEnum nxHostJob::UnsubscribeState(nxAlgoProductObject* product)
{
    return _Want(product, 0, 0, -1);
}
