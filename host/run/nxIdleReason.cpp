#include "host/run/nxIdleReason.h"

namespace {

bool HasRows(const nxFeedProduct& product)
{
    return product.Has(nxFeedKind::Quote) || product.Has(nxFeedKind::Depth) || product.Has(nxFeedKind::Bar);
}

// The products that the data hold rows of, the first few by name.
std::string GetNames(const nxFeedProductTable& products)
{
    constexpr unsigned int mostNamed = 20;
    std::string names;
    unsigned int count = 0;
    for (unsigned int i = 0; i < products.GetCount(); ++i) {
        if (!HasRows(products.Get(i)) || ++count > mostNamed) continue;
        names += (names.empty() ? "" : ", ") + products.Get(i).GetName();
    }
    return count <= mostNamed ? names : names + " and " + std::to_string(count - mostNamed) + " more";
}

// What keeps the events of one product away; empty when nothing does.
std::string Explain(nxJobRunner& runner, const nxHostProduct& product, const nxFeedProduct* known,
                    const std::string& names)
{
    const std::string& name = product.GetMarket().GetName();
    const bool hasRows = known != nullptr && HasRows(*known);
    const auto lacks = [&](nxCallback callback, nxMarketEvent event) {
        return product.Wants(event) && !runner.GetStatistics()[callback].defined;
    };
    if (!hasRows && !product.GetMarket().IsStrategy())
        return "the data holds nothing of product " + name + "; it holds " + names;
    if (lacks(nxCallback::OnPrice, nxMarketEvent::Price))
        return "the script subscribed to the prices of " + name + " but defines no function OnPrice";
    if (lacks(nxCallback::OnMarketDepth, nxMarketEvent::Depth))
        return "the script subscribed to the depth of " + name + " but defines no function OnMarketDepth";
    if (lacks(nxCallback::OnTradeWindowEvent, nxMarketEvent::TradeWindow))
        return "the script started a trade window of " + name + " but defines no function OnTradeWindowEvent";
    if (product.Wants(nxMarketEvent::Depth))
        return "the script subscribed to the depth of " + name + ", of which the data holds none";
    if (lacks(nxCallback::OnProductState, nxMarketEvent::State))
        return "the script subscribed to the state of " + name + " but defines no function OnProductState";
    return hasRows ? std::string() : "the legs of " + name + " never had quotes of one side together";
}

}  // namespace

std::string nxGetIdleReason(nxJobRunner& runner, const nxFeedProductTable& products, bool isEarly)
{
    const std::string names = GetNames(products);
    nxHostJob& job = runner.GetJob();
    if (names.empty()) return "the data holds no rows";
    if (!runner.unknownProduct.empty())
        return "the script asked for product " + runner.unknownProduct +
               ", which is not in the data; it holds " + names;
    // A script that was ended early may have had its reasons; the summary tells how it ended. One that looks
    // at other jobs needs no product.
    if (isEarly || job.GetWatchedJobs() != nullptr) return {};
    if (job.GetProducts().empty()) return "the script asked for no product; the data holds " + names;
    if (!job.HasSubscribed())
        return "the script subscribed to nothing: call subscribePrice() or subscribeMarketDepth() of a "
               "product";
    for (const auto& [name, product] : job.GetProducts())
        if (std::string reason = Explain(runner, *product, products.Find(name), names); !reason.empty())
            return reason;
    return {};
}
