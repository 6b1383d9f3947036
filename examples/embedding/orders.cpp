// An order on its way from a script to the host and back: the script sends it, the host accepts it, fills a
// part, and takes the rest out of the market when the script pulls it.
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/time/nxTimeSource.h"
#include "scriptFramework/job/nxAlgoJobObject.h"
#include "scriptFramework/job/nxQuietJobInterface.h"
#include "scriptFramework/market/nxAlgoProductObject.h"
#include "scriptFramework/orders/nxAlgoOrderObject.h"
#include "scriptFramework/orders/nxAlgoOrderParameters.h"
#include "scriptFramework/orders/nxAlgoOrderUpdateObject.h"

namespace {

constexpr const char* Script = R"(
function OnInit()
  local order = job:getProduct("DEMO"):createOrder{side = "BUY", type = "LIMIT"}
  local _, reason = pcall(order.work, order, {price = 100.25})
  job:logText("not sent: " .. reason)
  order:work{price = 100.25, volume = 3}
end

function OnOrderWorking(update)
  job:logText("order " .. update.id .. " works: " .. update.side .. " " .. update.working .. " at " .. update.price)
end

function OnOrderFill(update)
  job:logText("filled " .. update.fillVolume .. " at " .. update.fillPrice .. ", " .. update.working .. " left")
  update.order:pull()
end

function OnOrderCancelled(update)
  local order = update.order
  job:logText("over with " .. order.executed .. " of " .. order.volume .. ", " .. tostring(order.state:isDeleted()))
end
)";

// The host's order: what the script asked for, and what has become of it. `product.createOrder` makes one;
// `order:work` and `order:pull` end in _WorkOrder and _PullOrder. With several threads, Apply would take
// _orderMutex.
class Order : public nxAlgoOrderObject
{
public:
    Order(nxAlgoJobInterface* job, nxAlgoProductObject* product, const std::string& side, unsigned int id)
        : nxAlgoOrderObject(job, product), _id(id)
    {
        SetSide(side);
    }

    unsigned int GetID() const override { return _id; }
    nxDecimal GetPrice() override { return _price; }
    unsigned int GetVolume() override { return _volume; }
    unsigned int GetExecuted() override { return _executed; }
    unsigned int GetWorking() override { return _status.IsWorkingOrder() ? _volume - _executed : 0; }

    // What the script asked for since the last call: true for a request to send the order on.
    bool TakeWork() { return std::exchange(_isWorkWanted, false); }
    bool TakePull() { return std::exchange(_isPullWanted, false); }

    // The venue has answered. The record tells what the order is after the event; a fill brings price and
    // volume.
    nxOrderTransaction Apply(const nxOrderStatusEnum& status, const nxDecimal& fillPrice = {},
                             unsigned int fillVolume = 0)
    {
        _status = status;
        _executed += fillVolume;
        nxOrder record;
        record.SetPrice(_price);
        record.SetVolume(_volume);
        record.SetExecutedVolume(_executed);
        record.SetResidualVolume(GetWorking());
        nxOrderTransaction transaction;
        transaction.SetOrder(record);
        if (fillVolume > 0) {
            transaction.SetFillPrice(fillPrice);
            transaction.SetFillVolume(fillVolume);
            _SetLastFill(fillPrice, fillVolume);
        }
        return transaction;
    }

protected:
    // Fields that the script's table does not name come as no-change. False raises the error that GetError of
    // the interface tells. The script's callback is still running, so the answer comes later, from the host's
    // loop.
    bool _WorkOrder(const nxAlgoOrderParameters& wanted) override
    {
        if (wanted.GetPrice().IsValid()) _price = wanted.GetPrice();
        if (wanted.GetVolume().IsValid()) _volume = wanted.GetVolume().GetValue();
        GetJob()->SetError(_volume == 0 ? "the order has no volume" : "");
        _isWorkWanted = _volume > 0;
        return _isWorkWanted;
    }
    bool _PullOrder(const nxVolume&) override
    {
        _isPullWanted = true;
        return true;
    }
    void _GetOrderStatus(nxOrderStatusEnum& status) override { status = _status; }

private:
    unsigned int _id;
    nxDecimal _price;
    unsigned int _volume = 0;
    unsigned int _executed = 0;
    nxOrderStatusEnum _status = nxOrderStatus_Pending;
    bool _isWorkWanted = false;
    bool _isPullWanted = false;
};

class Product : public nxAlgoProductObject
{
public:
    explicit Product(nxAlgoJobInterface* job) : nxAlgoProductObject(job, nxGenericProductID("DEMO"), 1)
    {
        SetName("DEMO");
    }

    std::vector<std::unique_ptr<Order>> orders;  // as long as the script

protected:
    // The texts are checked already: side is BUY or SELL, and so on.
    nxAlgoOrderObject* _CreateOrder(const std::string& side, const std::string& type, const std::string&,
                                    const std::string&, const std::string&, const std::string&) override
    {
        if (type != "LIMIT") return nullptr;  // "createOrder Failed"
        const auto id = static_cast<unsigned int>(orders.size() + 1);
        return orders.emplace_back(std::make_unique<Order>(GetJob(), this, side, id)).get();
    }
};

class Host : public nxQuietJobInterface
{
public:
    nxAlgoProductObject* GetProduct(const std::string& name) override
    {
        return name == "DEMO" ? &product : nullptr;
    }
    void LogText(const std::string& text) override { std::printf("script: %s\n", text.c_str()); }
    void SetError(const std::string& text) override { _reason = text; }
    std::string GetError() override { return _reason; }

    Product product{this};

private:
    std::string _reason;
};

// A venue that accepts what comes, fills 2 at once and pulls on demand.
bool Answer(Host& host, nxAlgoJobObject& job, Order& order)
{
    const auto makeUpdate = [&](const nxOrderTransaction& transaction) {
        return nxAlgoOrderUpdateObject(&host, &order, &transaction, nxTimeSource::Now());
    };
    bool succeeded = true;
    if (order.TakeWork()) {
        const nxOrderTransaction accepted = order.Apply(nxOrderStatus_Working);
        nxAlgoOrderUpdateObject update = makeUpdate(accepted);
        succeeded = job.OnOrderWorking(update).IsSuccess();
        const nxOrderTransaction filled =
            order.Apply(nxOrderStatus_PartiallyFilled, nxDecimal(10020, 100, 2), 2);
        nxAlgoOrderUpdateObject fill = makeUpdate(filled);
        succeeded =
            job.OnOrderFill(fill).IsSuccess() && succeeded;  // OnOrderCompleted too when nothing is left
    }
    if (order.TakePull()) {
        const nxOrderTransaction pulled = order.Apply(nxOrderStatus_Deleted);
        nxAlgoOrderUpdateObject update = makeUpdate(pulled);
        succeeded = job.OnOrderCancelled(update).IsSuccess() && succeeded;
    }
    return succeeded;
}

}  // namespace

int main()
{
    Host host;  // outlives the job
    nxAlgoJobObject job(&host);
    bool succeeded = job.LoadScript(Script).IsSuccess() && job.StartJob().IsSuccess();
    for (std::size_t i = 0; succeeded && i < host.product.orders.size(); ++i)
        succeeded = Answer(host, job, *host.product.orders[i]);
    if (!succeeded) std::fprintf(stderr, "%s\n", job.GetErrorText().c_str());
    job.StopJob();
    return succeeded ? 0 : 1;
}
