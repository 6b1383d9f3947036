#include "host/run/nxDelivery.h"

#include <algorithm>

void nxDelivery::NoteSubscription(nxLaunchedJob& job, nxHostProduct& product, nxMarketEvent event)
{
    const unsigned int index = product.GetMarketIndex();
    if (index >= _audiences.size()) _audiences.resize(index + 1);
    Audience& audience = _audiences[index];
    audience.products.resize(_jobs.GetCount());
    audience.products[job.GetIndex()] = &product;
    if (event == nxMarketEvent::TradeWindow) audience.hasWindows = true;
    if (event == nxMarketEvent::TradeVolumes) {
        audience.hasTradeVolumes = true;
        product.UpdateTradeVolumes(product.GetMarket().GetTradeVolumes());
    }
    if (event == nxMarketEvent::Position) _trading.AddPositionNews(_jobs.Get(job), product);
}

// By index: a callback may be the first to subscribe to another market.
template <class Entry, class Event>
void nxDelivery::_Deliver(const nxMarket& market, nxMarketEvent kind, nxCallback callback, Entry entry,
                          Event event)
{
    if (_Find(market) == nullptr) return;
    for (std::size_t i = 0; i < _audiences[market.index].products.size() && !_state.IsEnding(); ++i) {
        nxHostProduct* const product = _audiences[market.index].products[i];
        if (product != nullptr && product->Wants(kind))
            _jobs.Deliver(callback, _jobs.Get(i), entry, event(*product));
    }
}

void nxDelivery::DeliverTrade(const nxMarket& market)
{
    if (const Audience* audience = _Find(market); audience == nullptr || !audience->hasWindows) return;
    for (std::size_t i = 0; i < _audiences[market.index].products.size() && !_state.IsEnding(); ++i) {
        nxHostProduct* const product = _audiences[market.index].products[i];
        if (product != nullptr && product->Wants(nxMarketEvent::TradeWindow) && !_jobs.Get(i).IsOver())
            product->ForwardTrade();
    }
}

void nxDelivery::DeliverPrice(const nxMarket& market)
{
    _Deliver(
        market, nxMarketEvent::Price, nxCallback::OnPrice, &nxAlgoJobObject::OnPrice,
        [](nxHostProduct & product) -> auto& { return product.GetPriceEvent(); });
}

void nxDelivery::DeliverDepth(const nxMarket& market)
{
    _Deliver(
        market, nxMarketEvent::Depth, nxCallback::OnMarketDepth, &nxAlgoJobObject::OnMarketDepth,
        [](nxHostProduct & product) -> auto& { return product.GetDepthEvent(); });
}

void nxDelivery::DeliverState(const nxMarket& market)
{
    _Deliver(
        market, nxMarketEvent::State, nxCallback::OnProductState, &nxAlgoJobObject::OnProductState,
        [](nxHostProduct & product) -> auto& { return product.GetStateEvent(); });
}

void nxDelivery::UpdateTradeVolumes(const nxMarket& market)
{
    Audience* const audience = _Find(market);
    if (audience == nullptr || !audience->hasTradeVolumes) return;
    audience->haveTradeVolumesChanged = false;
    const auto wants = [](const nxHostProduct* product) {
        return product != nullptr && product->Wants(nxMarketEvent::TradeVolumes);
    };
    if (std::ranges::none_of(audience->products, wants)) return;
    nxPriceTradeVolumes update;
    audience->haveTradeVolumesChanged = market.product.GetTradeVolumesUpdate(update);
    if (!audience->haveTradeVolumesChanged) return;
    for (nxHostProduct* product : audience->products)
        if (wants(product)) product->UpdateTradeVolumes(update);
}

void nxDelivery::DeliverTradeVolumes(const nxMarket& market)
{
    if (const Audience* audience = _Find(market); audience == nullptr || !audience->haveTradeVolumesChanged)
        return;
    _Deliver(
        market, nxMarketEvent::TradeVolumes, nxCallback::OnPriceTradeVolumes,
        &nxAlgoJobObject::OnPriceTradeVolumes,
        [](nxHostProduct & product) -> auto& { return product.GetTradeVolumesEvent(); });
}

void nxDelivery::TakeTickSize(const nxMarket& market)
{
    for (const auto& runner : _jobs)
        if (nxHostProduct* const product = runner->GetJob().FindProduct(market.product.GetName()))
            product->TakeTickSize();
}
