#include "host/check/nxDryRun.h"

#include <algorithm>

#include "host/check/nxScriptCheckTexts.h"
#include "indicators/nxIndicatorCatalogue.h"
#include "scriptFramework/analytics/nxAlgoDataSeriesObject.h"
#include "scriptFramework/analytics/nxAlgoEventWindowObject.h"
#include "scriptFramework/analytics/nxAlgoTickDataCollectionObject.h"
#include "scriptFramework/job/nxAlgoJobObject.h"
#include "scriptFramework/market/nxAlgoProductObject.h"

namespace {

constexpr std::size_t MemoryLimit = std::size_t{256} << 20;

// Without bars, as in a replay that is about to begin.
class DryCollection : public nxAlgoTickDataCollectionObject
{
public:
    using nxAlgoTickDataCollectionObject::nxAlgoTickDataCollectionObject;

protected:
    nxAlgoIndicatorObject* _createIndicator(const std::string& type,
                                            const std::map<std::string, std::string>& parameters,
                                            std::string& error) override
    {
        auto indicator = nxIndicatorCatalogue::Create(type, parameters, error);
        return indicator == nullptr ? nullptr : new nxAlgoIndicatorObject(GetJob(), indicator.release());
    }
    bool _Subscribe(bool) override { return true; }
};

// A product about 100, one tick wide, with one level on either side of its book.
class DryProduct : public nxAlgoProductObject
{
public:
    DryProduct(nxAlgoJobInterface* job, const std::string& name, unsigned int id)
        : nxAlgoProductObject(job, nxGenericProductID(name), id)
    {
        const nxDecimal tickSize(1, 100, 2);
        SetName(name);
        SetTickSize(tickSize);
        SetPriceManipulator(nxPriceManipulator(tickSize));
        SetPointValue(nxMoney(nxDecimal(1, 1, 0), nxCurrencyEnum()));
    }

protected:
    nxAlgoOrderObject* _CreateOrder(const std::string& side, const std::string& type, const std::string& exec,
                                    const std::string& time, const std::string& spreadSpec,
                                    const std::string&) override
    {
        return GetJob()->CreateOrder(this, side, type, exec, time, spreadSpec);
    }

    nxAlgoEventWindowObject* _CreateEventWindow(double duration, double frequency) override
    {
        return new nxAlgoEventWindowObject(GetJob(), this, duration, frequency);
    }
    nxAlgoTickDataCollectionObject* _CreateTickDataCollection(const std::string& period, unsigned int ticks,
                                                              const nxDateTime&, const nxDateTime&) override
    {
        nxTickDataPeriodEnum periodEnum;
        static_cast<void>(periodEnum.SetFromString(period));
        return new DryCollection(GetJob(), this, period, periodEnum, ticks);
    }

    void _GetPriceSnapshot(nxPrice& price) const override
    {
        price.SetBidPrice(_bid);
        price.SetBidVolume(nxVolume(10));
        price.SetAskPrice(_ask);
        price.SetAskVolume(nxVolume(10));
        price.SetLastPrice(_bid);
        price.SetLastVolume(nxVolume(1));
        price.SetTotalTradedVolume(nxVolume(1));
        for (const auto set : {&nxPrice::SetOpenPrice, &nxPrice::SetHighPrice, &nxPrice::SetLowPrice,
                               &nxPrice::SetClosePrice, &nxPrice::SetPreviousClosePrice,
                               &nxPrice::SetSettlementPrice, &nxPrice::SetPreviousSettlementPrice})
            (price.*set)(_bid);
    }

    void _GetDepthSnapshot(nxMarketDepth& depth) const override
    {
        depth.SetBid(_bid, nxVolume(10));
        depth.SetAsk(_ask, nxVolume(10));
    }

private:
    const nxDecimal _bid{9999, 100, 2};
    const nxDecimal _ask{10000, 100, 2};
};

// An order that is on its way for ever.
class DryOrder : public nxAlgoOrderObject
{
public:
    DryOrder(nxAlgoJobInterface* job, nxAlgoProductObject* product, unsigned int id, std::string type,
             std::string exec, std::string time)
        : nxAlgoOrderObject(job, product),
          _id(id),
          _type(std::move(type)),
          _exec(std::move(exec)),
          _time(std::move(time))
    {
    }

    unsigned int GetID() const override { return _id; }
    std::string GetType() override { return _type; }
    std::string GetExec() override { return _exec; }
    std::string GetTime() override { return _time; }

protected:
    void _GetOrderStatus(nxOrderStatusEnum& status) override { status = nxOrderStatus_Pending; }

private:
    const unsigned int _id;
    const std::string _type, _exec, _time;
};

// Is forgotten with the run.
class DryStore : public nxAlgoDataStoreObject
{
public:
    using nxAlgoDataStoreObject::nxAlgoDataStoreObject;

protected:
    bool _BeginPersist() override { return false; }
    void _PersistRow(const Row*) override {}
    void _EndPersist() override {}
};

}  // namespace

nxDryRun::nxDryRun(nxParameterSet parameters, nxScriptProfile profile)
    : _parameters(std::move(parameters)), _profile(profile)
{
}

// The script's finalizers may still ask for products.
nxDryRun::~nxDryRun()
{
    _DeleteJob();
}

nxAlgoProductObject* nxDryRun::GetProduct(const std::string& productName)
{
    std::unique_ptr<nxAlgoProductObject>& product = _products[productName];
    if (product == nullptr)
        product =
            std::make_unique<DryProduct>(this, productName, static_cast<unsigned int>(_products.size()));
    return product.get();
}

nxAlgoOrderObject* nxDryRun::CreateOrder(nxAlgoProductObject* product, const std::string& side,
                                         const std::string& type, const std::string& exec,
                                         const std::string& time, const std::string&)
{
    _orders.orders.push_back(
        std::make_unique<DryOrder>(this, product, _orders.GetCount() + 1, type, exec, time));
    _orders.orders.back()->SetSide(side);
    return _orders.orders.back().get();
}

nxVorantParameter* nxDryRun::GetParameter(const std::string& name) const
{
    if (std::ranges::find(_asked, name) == _asked.end()) _asked.push_back(name);
    const nxVorantParameter* const parameter = _parameters.Find(name);
    return parameter == nullptr ? nullptr : parameter->CopyInstance();
}

nxAlgoDataSeriesObject* nxDryRun::CreateDataSeries()
{
    return _series.emplace_back(std::make_unique<nxAlgoDataSeriesObject>(this)).get();
}

nxAlgoDataStoreObject* nxDryRun::GetDataStore(const std::string& name, bool create)
{
    const auto known = _stores.find(name);
    if (known != _stores.end()) return known->second.get();
    return create ? (_stores[name] = std::make_unique<DryStore>(this)).get() : nullptr;
}

std::optional<nxScriptFailure> nxDryRun::Try(const nxScriptSource& source)
{
    nxAlgoJobObject& job = *_GetJob();
    job.SetMemoryLimit(MemoryLimit);
    if (!CheckScript(nxScriptCheckDryRunText())) return source.Explain(job.GetErrorText());
    job.SetProfile(_profile);
    job.SetScriptHelper(source.GetHelper());
    if (!CheckScript(source.GetText())) return source.Explain(job.GetErrorText());
    _hasOnInit = job.IsFunctionDefined(nxGetCallbackName(nxCallback::OnInit));
    if (!_hasOnInit) return std::nullopt;
    _inOnInit = true;
    const bool succeeded = Run();
    _inOnInit = false;
    if (succeeded) return std::nullopt;
    return source.Explain(job.GetErrorText());
}
