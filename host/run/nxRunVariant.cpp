#include "host/run/nxRunVariant.h"

#include <algorithm>

namespace {

using Variants = std::vector<nxRunVariant>;

nxRunVariant& Add(Variants& variants, const char* name, const nxRunOptions& own)
{
    return variants.emplace_back(nxRunVariant{name, own.exchange, own.feedLatency, own.products});
}

// From the most optimistic fill model on; then what makes the run's own harder.
void AddBookVariants(Variants& variants, const nxRunOptions& own)
{
    std::vector<const nxFillModel*> models;
    for (const nxFillModel& model : nxFillModel::GetAll())
        models.push_back(&model);
    std::ranges::sort(models, std::ranges::greater(), &nxFillModel::rank);
    for (const nxFillModel* model : models)
        Add(variants, model->name, own).exchange.fills = model;
    nxQueueRule back;
    if (back.SetFromText("back") && back.model != own.exchange.queue.model)
        Add(variants, "back", own).exchange.queue = back;
}

// withOwn: also the run's own model.
void AddBarVariants(Variants& variants, const nxRunOptions& own, bool withOwn)
{
    for (const nxBarModel& model : nxBarModel::GetAll())
        if (withOwn || &model != own.exchange.bars.model)
            Add(variants, model.name, own).exchange.bars.model = &model;
    if (!own.exchange.bars.isThrough) Add(variants, "through", own).exchange.bars.isThrough = true;
}

bool HasLatency(const nxRunOptions& own)
{
    return own.exchange.request.most != 0 || own.exchange.answer.most != 0 || own.feedLatency.most != 0;
}

void AddLatency(Variants& variants, const char* name, const nxRunOptions& own,
                nxLatency (nxLatency::*get)() const)
{
    nxRunVariant& variant = Add(variants, name, own);
    variant.exchange.request = (own.exchange.request.*get)();
    variant.exchange.answer = (own.exchange.answer.*get)();
    variant.feedLatency = (own.feedLatency.*get)();
}

std::vector<nxDecimal*> GetFees(nxProductDescription& product)
{
    std::vector<nxDecimal*> fees = {&product.makerFee, &product.takerFee, &product.minimumFee};
    for (nxFeeTier& tier : product.feeTiers)
        fees.insert(fees.end(), {&tier.makerFee, &tier.takerFee});
    std::erase_if(fees, [](const nxDecimal* fee) { return !fee->IsValid() || *fee == nxDecimalZero; });
    return fees;
}

bool HasFees(const nxRunOptions& own)
{
    return std::ranges::any_of(own.products,
                               [](nxProductDescription product) { return !GetFees(product).empty(); });
}

// In tenths, so that half is exact.
void AddFees(Variants& variants, const char* name, const nxRunOptions& own, long long tenths)
{
    for (nxProductDescription& product : Add(variants, name, own).products)
        for (nxDecimal* const fee : GetFees(product))
            *fee = nxDecimal::FromMantissa(fee->GetMantissa() * tenths,
                                           static_cast<unsigned char>(fee->GetDecimalPlaces() + 1));
}

}  // namespace

nxRunReach::nxRunReach(const nxRunStatistics& statistics)
{
    for (const nxJobStatistics& job : statistics.jobs) {
        hasBooks = hasBooks || job.trading.orders != job.trading.barOrders;
        hasBars = hasBars || job.trading.barOrders != 0;
    }
}

void nxRunVariant::Apply(nxRunOptions& options) const
{
    options.exchange = exchange;
    options.feedLatency = feedLatency;
    options.products = products;
}

const char* nxRunVariant::GetOwnName(const nxExchangeOptions& own, const nxRunReach& reach)
{
    return reach.IsOfBarsAlone() ? own.bars.model->name : own.fills->name;
}

Variants nxRunVariant::GetForEnvelope(const nxRunOptions& own, const nxRunReach& reach)
{
    Variants variants;
    if (reach.hasBooks) AddBookVariants(variants, own);
    if (reach.hasBars) AddBarVariants(variants, own, !reach.hasBooks);
    if (variants.empty())
        Add(variants, GetOwnName(own.exchange, reach), own);
    else if (HasLatency(own))
        AddLatency(variants, "2x latency", own, &nxLatency::GetTwice);
    return variants;
}

Variants nxRunVariant::GetForBest(const nxRunOptions& own, const nxRunReach& reach)
{
    Variants variants = GetForEnvelope(own, reach);
    std::erase_if(variants, [&](const nxRunVariant& variant) {
        return variant.name == GetOwnName(own.exchange, reach);
    });
    if (reach.IsEmpty()) return variants;
    if (HasLatency(own)) AddLatency(variants, "half latency", own, &nxLatency::GetHalf);
    if (HasFees(own)) {
        AddFees(variants, "half fees", own, 5);
        AddFees(variants, "2x fees", own, 20);
    }
    return variants;
}
