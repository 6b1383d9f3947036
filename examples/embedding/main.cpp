// A host in one file: it has one product, runs a script over five made-up prices, and lets it use a timer.
#include <cstdio>
#include <set>
#include <string>

#include "base/log/nxLogManager.h"
#include "scriptFramework/job/nxAlgoJobObject.h"
#include "scriptFramework/job/nxQuietJobInterface.h"
#include "scriptFramework/market/nxAlgoProductObject.h"

namespace {

constexpr const char* Script = R"(
function OnInit()
  product = job:getProduct("DEMO")
  product:subscribePrice()
  job:startTimer("tick", 2)
end

function OnPrice(price)
  if price:isBid() then
    job:logText(product.name .. " is bid " .. price.bidPrice .. " for " .. price.bidVolume)
  end
end

function OnTimer(name)
  job:logText(name .. ": the product's bid is " .. product.price.bidPrice)
end

function OnShutdown()
  job:logText("bye")
end
)";

// The host's product: the library asks it for the current price.
class Product : public nxAlgoProductObject
{
public:
    explicit Product(nxAlgoJobInterface* job) : nxAlgoProductObject(job, nxGenericProductID("DEMO"), 1)
    {
        SetName("DEMO");
        SetTickSize(nxDecimal(1, 100, 2));
    }

    nxPrice current;

protected:
    void _GetPriceSnapshot(nxPrice& price) const override { price = current; }
};

// What the script can ask of this host. Everything else is answered by nxQuietJobInterface with nothing.
class Host : public nxQuietJobInterface
{
public:
    nxAlgoProductObject* GetProduct(const std::string& name) override
    {
        return name == "DEMO" ? &product : nullptr;
    }
    nxErrorEnum SubscribePrice(nxAlgoProductObject*) override
    {
        wantsPrices = true;
        return {};
    }
    nxErrorEnum UnsubscribePrice(nxAlgoProductObject*) override
    {
        wantsPrices = false;
        return {};
    }
    void StartTimer(const std::string& name, unsigned int) override { timers.insert(name); }
    void StopTimer(const std::string& name) override { timers.erase(name); }
    void LogText(const std::string& text) override { std::printf("script: %s\n", text.c_str()); }

    Product product{this};
    bool wantsPrices = false;
    std::set<std::string> timers;
};

bool Check(nxAlgoJobObject& job, const nxErrorEnum& error, const char* what)
{
    if (error.IsSuccess()) return true;
    std::fprintf(stderr, "%s failed: %s (%s)\n", what, job.GetErrorText().c_str(),
                 error.GetLongDescription().c_str());
    return false;
}

}  // namespace

int main()
{
    nxLogManager::SetLevel(nxLogLevel::Error);  // no log device is installed here
    Host host;                                  // outlives the job
    nxAlgoJobObject job(&host);
    if (!Check(job, job.LoadScript(Script), "loading")) return 1;
    if (!Check(job, job.StartJob(), "starting")) return 1;

    for (int i = 0; i < 5; ++i) {
        // An update has no-change in every field but those that the event brings.
        nxPrice update;
        update.SetNoChange();
        if (i != 3) update.SetBidPrice(nxDecimal(10000 + i, 100, 2));
        if (i == 0) update.SetBidVolume(5u);
        host.product.current.ApplyUpdate(update);

        nxAlgoPriceObject price(&host, &host.product.current, &update, 1);
        if (host.wantsPrices && !Check(job, job.OnPrice(price), "OnPrice")) return 1;
        if (i % 2 == 1)
            for (const std::string& timer : host.timers)
                if (!Check(job, job.OnTimer(timer), "OnTimer")) return 1;
    }
    job.StopJob();
    return Check(job, job.OnShutdown(), "OnShutdown") ? 0 : 1;
}
