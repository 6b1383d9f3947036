#include "host/jobs/nxTradingJob.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "host/jobs/nxOrderServices.h"

nxAlgoOrderObject* nxTradingJob::CreateOrder(nxAlgoProductObject* product, const std::string& side,
                                             const std::string& type, const std::string& exec,
                                             const std::string& time, const std::string& spreadSpec)
{
    auto& known = static_cast<nxHostProduct&>(*product);  // every product of the job is one
    const unsigned int id = GetServices().orders->ReserveOrder();
    const nxHostOrder::Texts texts{side, type, exec, time, spreadSpec};
    nxHostOrder& order = _orders.emplace_back(*this, known, texts, id);
    GetServices().orders->NoteOrder(order);
    return &order;
}

nxHostOrder& nxTradingJob::AddChild(const nxExchangeOrder& child, nxHostOrder& parent)
{
    nxHostOrder& order =
        _orders.emplace_back(*this, parent.GetHostProduct(), nxOrderTicket(child, parent.GetTicket()));
    GetServices().orders->NoteOrder(order);
    return order;
}

nxAlgoOrderObject* nxTradingJob::GetOrder(unsigned int id)
{
    nxHostOrder* const order = GetServices().orders->FindOrder(id);
    if (order == nullptr || &order->GetOwner() == this) return order;
    std::unique_ptr<nxForeignOrder>& view = _foreignOrders[id];
    if (view == nullptr) {
        nxAlgoProductObject* const product = GetProduct(order->GetHostProduct().GetMarket().GetName());
        view = std::make_unique<nxForeignOrder>(*this, static_cast<nxHostProduct&>(*product), *order);
    }
    view->Refresh();
    return view.get();
}

void nxTradingJob::NoteRequest(const nxHostOrder& order)
{
    _ShowTransactionCount(++_requestCount);
    GetServices().orders->NoteRequest(order);
}

nxDecimal nxTradingJob::GetPandL(const nxCurrencyEnum& currency)
{
    nxExactAmount profit;
    for (const auto& [name, product] : GetProducts())
        if (product->GetAccount().GetCurrency() == currency)
            profit += product->GetAccount().GetKeeper().GetTotalProfit(product->GetMark());
    return profit.GetAsDecimal();
}

bool nxTradingJob::HasOpenOrders(const nxHostProduct& product) const
{
    return std::ranges::any_of(_orders, [&](const nxHostOrder& order) {
        return &order.GetHostProduct() == &product && order.GetTicket().IsOpen();
    });
}

void nxTradingJob::ClosePosition(nxHostProduct& product, bool atOnce)
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

std::vector<std::string> nxTradingJob::DescribeExits(
    const std::function<std::string(const nxHostProduct&)>& why)
{
    std::vector<std::string> texts;
    for (const auto& [name, product] : GetProducts()) {
        if (!product->FlattensOnExit()) continue;
        const long long net = product->GetAccount().GetKeeper().GetNet();
        std::string text;
        for (nxHostOrder* order : product->GetClosingOrders()) {
            if (order->GetExecuted() == 0) continue;
            text += fmt::format("{}{} {} at {}", text.empty() ? "" : ", ",
                                order->GetTicket().GetSide() == nxSide::Buy ? "bought" : "sold",
                                order->GetExecuted(), order->GetAveragePrice().GetAsString());
        }
        if (net != 0)
            text += fmt::format("{}{} {}: {}", text.empty() ? "" : ", ", std::abs(net),
                                net > 0 ? "long stay open" : "short stay open", why(*product));
        if (!text.empty()) texts.push_back(name + ": " + text);
    }
    return texts;
}

// The order strings, the switches and the chart are for those who read the record.
void nxTradingJob::SetOrderUserString(const std::string& text)
{
    _orderUserString = text;
    Record("orderUserString1", {{"text", text}});
}

void nxTradingJob::SetOrderUserString2(const std::string& text)
{
    _orderUserString2 = text;
    Record("orderUserString2", {{"text", text}});
}

void nxTradingJob::SetShatterOnExit(bool on)
{
    _shatters = on;
    _RecordFlag("shatterOnExit", on);
}

void nxTradingJob::SetEnableCrossProtection(bool on)
{
    _crossProtected = on;
    _RecordFlag("enableCrossProtection", on);
}
