#include "host/jobs/nxHostJob.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "host/jobs/nxBarServices.h"
#include "host/jobs/nxMarketServices.h"
#include "host/jobs/nxNewsServices.h"
#include "host/jobs/nxOrderServices.h"
#include "host/jobs/nxStoreServices.h"
#include "host/jobs/nxTimerServices.h"
#include "scriptFramework/analytics/nxAlgoDataSeriesObject.h"
#include "scriptFramework/analytics/nxAlgoEventWindowObject.h"
#include "scriptFramework/analytics/nxAlgoLibraryObject.h"

nxHostJob::nxHostJob(const nxHostServices& services, const nxJobOptions& options, unsigned int index,
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
    if (_watchedJobs == nullptr) _watchedJobs = std::make_unique<nxWatchedJobs>(*_services.news, *this);
    return _watchedJobs.get();
}

nxAlgoDataStoreObject* nxHostJob::GetDataStore(const std::string& name, bool create)
{
    return _services.stores->GetDataStore(*this, name, create);
}

nxAlgoProductObject* nxHostJob::GetProduct(const std::string& productName)
{
    const auto known = _products.find(productName);
    if (known != _products.end()) return known->second.get();
    const nxMarket* const market = _services.markets->FindMarket(productName);
    if (market == nullptr) {
        _services.markets->NoteUnknownProduct(*this, productName);
        return nullptr;
    }
    const auto id = static_cast<unsigned int>(_products.size() + 1);
    std::unique_ptr<nxHostProduct>& product = _products[productName];
    product = std::make_unique<nxHostProduct>(this, *market, id);
    _services.markets->NoteProduct(*product);
    return product.get();
}

void nxHostJob::NoteRequest(const nxHostOrder& order)
{
    _status.SetTransactionCount(++_requestCount);
    _NoteChange(_changes.status);
    _services.orders->NoteRequest(order);
}

void nxHostJob::AddFill(nxHostProduct& product, nxSide side, const nxExchangeEvent& fill)
{
    product.GetAccount().AddFill(side, fill.fillPrice, fill.fillVolume, fill.isMaker);
    ++_trading.fills;
    _trading.volume += fill.fillVolume;
    if (fill.isMaker) _trading.makerVolume += fill.fillVolume;
    _Value(product, product.GetMark());
}

void nxHostJob::Revalue(nxHostProduct& product)
{
    const nxDecimal mark = product.GetMark();
    if (mark != product.GetValue().mark) _Value(product, mark);
}

// The sums of a currency change by what one of its products does.
void nxHostJob::_Value(nxHostProduct& product, const nxDecimal& mark)
{
    const nxPositionKeeper& keeper = product.GetAccount().GetKeeper();
    const nxHostProduct::Value now{mark, keeper.GetTotalProfit(mark), keeper.GetOpenProfit(mark),
                                   keeper.GetTotal().fees};
    const nxHostProduct::Value before = std::exchange(product.GetValue(), now);
    nxTradingStatistics::Money& money = _trading[product.GetAccount().GetCurrency()];
    money.profit += now.profit - before.profit;
    money.open += now.open - before.open;
    money.fees += now.fees - before.fees;
    const nxExactAmount fallen = money.best - money.profit;
    if (fallen.IsNegative()) money.best = money.profit;
    if ((money.drawdown - fallen).IsNegative()) money.drawdown = fallen;
}

bool nxHostJob::HasOpenOrders(const nxHostProduct& product) const
{
    return std::ranges::any_of(
        _orders, [&](const auto& order) { return &order->GetHostProduct() == &product && order->IsOpen(); });
}

void nxHostJob::Close(nxHostProduct& product, bool atOnce)
{
    constexpr long long most = 1'000'000'000;  // of one order
    const long long net = product.GetAccount().GetKeeper().GetNet();
    if (net == 0) return;
    nxAlgoOrderObject* const order =
        CreateOrder(&product, net > 0 ? "SELL" : "BUY", "MARKET", atOnce ? "IOC" : "", "GFD", "");
    product.GetClosingOrders().push_back(static_cast<nxHostOrder*>(order));
    product.GetClosingOrders().back()->Close(static_cast<unsigned int>(std::min(std::abs(net), most)),
                                             atOnce);
}

std::vector<std::string> nxHostJob::DescribeExits(const std::function<std::string(const nxHostProduct&)>& why)
{
    std::vector<std::string> texts;
    for (const auto& [name, product] : _products) {
        if (!product->FlattensOnExit()) continue;
        const long long net = product->GetAccount().GetKeeper().GetNet();
        std::string text;
        for (nxHostOrder* order : product->GetClosingOrders()) {
            if (order->GetExecuted() == 0) continue;
            text += fmt::format("{}{} {} at {}", text.empty() ? "" : ", ",
                                order->GetOrderSide() == nxSide::Buy ? "bought" : "sold",
                                order->GetExecuted(), order->GetAveragePrice().GetAsString());
        }
        if (net != 0)
            text += fmt::format("{}{} {}: {}", text.empty() ? "" : ", ", std::abs(net),
                                net > 0 ? "long stay open" : "short stay open", why(*product));
        if (!text.empty()) texts.push_back(name + ": " + text);
    }
    return texts;
}

nxDecimal nxHostJob::GetPandL(const nxCurrencyEnum& currency)
{
    nxExactAmount profit;
    for (const auto& [name, product] : _products)
        if (product->GetAccount().GetCurrency() == currency)
            profit += product->GetAccount().GetKeeper().GetTotalProfit(product->GetMark());
    return profit.GetAsDecimal();
}

const nxTradingStatistics& nxHostJob::GetTrading()
{
    _trading.orders = static_cast<unsigned long long>(
        std::ranges::count_if(_orders, [](const auto& order) { return order->IsSent(); }));
    return _trading;
}

nxAlgoOrderObject* nxHostJob::CreateOrder(nxAlgoProductObject* product, const std::string& side,
                                          const std::string& type, const std::string& exec,
                                          const std::string& time, const std::string& spreadSpec)
{
    auto& known = static_cast<nxHostProduct&>(*product);  // every product of the job is one
    const unsigned int id = _services.orders->ReserveOrder();
    const nxHostOrder::Texts texts{side, type, exec, time, spreadSpec};
    _orders.push_back(std::make_unique<nxHostOrder>(*this, known, texts, id));
    _services.orders->NoteOrder(*_orders.back());
    return _orders.back().get();
}

nxHostOrder& nxHostJob::AddChild(const nxExchangeOrder& child, nxHostOrder& parent)
{
    _orders.push_back(std::make_unique<nxHostOrder>(*this, parent.GetHostProduct(), child, parent));
    _services.orders->NoteOrder(*_orders.back());
    return *_orders.back();
}

nxAlgoOrderObject* nxHostJob::GetOrder(unsigned int id)
{
    nxHostOrder* const order = _services.orders->FindOrder(id);
    if (order == nullptr || &order->GetOwner() == this) return order;
    std::unique_ptr<nxHostOrder>& view = _foreignOrders[id];
    if (view == nullptr) {
        nxAlgoProductObject* const product = GetProduct(order->GetHostProduct().GetMarket().GetName());
        view = std::make_unique<nxHostOrder>(*this, static_cast<nxHostProduct&>(*product), *order);
    }
    view->Refresh(*order);
    return view.get();
}

void nxHostJob::OnTickData(nxAlgoTickDataObject& tick)
{
    _services.bars->DeliverTickData(*this, tick);
}

nxErrorEnum nxHostJob::_Want(nxAlgoProductObject* object, std::initializer_list<nxMarketEvent> events,
                             int change)
{
    auto& product = static_cast<nxHostProduct&>(*object);  // every product of the job is one
    for (const nxMarketEvent event : events) {
        if (!product.Want(event, change)) continue;
        _subscribed = true;
        _services.markets->NoteSubscription(*this, product, event);
    }
    return {};
}

nxErrorEnum nxHostJob::SubscribePrices(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Price, nxMarketEvent::Depth}, 1);
}

nxErrorEnum nxHostJob::UnsubscribePrices(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Price, nxMarketEvent::Depth}, -1);
}

nxErrorEnum nxHostJob::SubscribePrice(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Price}, 1);
}

nxErrorEnum nxHostJob::UnsubscribePrice(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Price}, -1);
}

nxErrorEnum nxHostJob::SubscribeMarketDepth(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Depth}, 1);
}

nxErrorEnum nxHostJob::UnsubscribeMarketDepth(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Depth}, -1);
}

nxErrorEnum nxHostJob::SubscribeState(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::State}, 1);
}

nxErrorEnum nxHostJob::UnsubscribeState(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::State}, -1);
}

nxErrorEnum nxHostJob::SubscribePriceTradeVolumes(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::TradeVolumes}, 1);
}

nxErrorEnum nxHostJob::UnsubscribePriceTradeVolumes(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::TradeVolumes}, -1);
}

nxErrorEnum nxHostJob::SubscribePositions(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Position}, 1);
}

nxErrorEnum nxHostJob::UnsubscribePositions(nxAlgoProductObject* product)
{
    return _Want(product, {nxMarketEvent::Position}, -1);
}

void nxHostJob::WantTrades(nxHostProduct& product, int change)
{
    static_cast<void>(_Want(&product, {nxMarketEvent::TradeWindow}, change));
}

void nxHostJob::StartEventWindowTimer(nxAlgoEventWindowObject* window, double seconds)
{
    _services.timers->StartTimer(*this, *window, seconds);
}

void nxHostJob::StopEventWindowTimer(nxAlgoEventWindowObject* window)
{
    _services.timers->StopTimer(*this, *window);
}

void nxHostJob::OnEventWindow(nxAlgoEventWindowObject& window)
{
    _services.bars->DeliverWindow(*this, window);
}

nxAlgoDataSeriesObject* nxHostJob::CreateDataSeries()
{
    auto series = std::make_unique<nxAlgoDataSeriesObject>(this);
    nxAlgoDataSeriesObject* const result = series.get();
    _made.push_back(std::move(series));
    return result;
}

nxAlgoLibraryObject* nxHostJob::LoadLibrary(const std::string&)
{
    auto library = std::make_unique<nxAlgoLibraryObject>(this);
    nxAlgoLibraryObject* const result = library.get();
    _made.push_back(std::move(library));
    return result;
}
