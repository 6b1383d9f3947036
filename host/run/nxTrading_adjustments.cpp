// Splits, rolls, dividends and funding: what they do to orders and accounts.

#include "host/run/nxTrading.h"

void nxTrading::Adjust(nxMarket& market, const nxAdjustment& adjustment)
{
    // Scripts act when all of it is done.
    const bool wasHeld = _jobs.GetSettler().Hold(true);
    _record.WriteAdjustment(adjustment);
    if (adjustment.EndsOrders()) _EndOrders(market, adjustment);
    if (_venue != nullptr) _AdjustAccounts(market, adjustment);
    _jobs.GetSettler().Hold(wasHeld);
    _jobs.GetSettler().Run();
}

void nxTrading::_EndOrders(nxMarket& market, const nxAdjustment& adjustment)
{
    if (_venue != nullptr) _venue->Advance(_clock.Get());
    market.product.Adjust(adjustment);
    if (market.ahead) market.ahead->Adjust(adjustment);
    if (_venue == nullptr) return;
    _venue->EndOrders(
        _markets[market.index].venueProduct,
        adjustment.kind == nxAdjustmentKind::Split ? "the product is split" : "the contract is rolled",
        _clock.Get());
    // Answers on their way arrive at once: what they tell is in the lots and prices of before.
    if (_answer) DeliverAnswer();
    while (_venue->PopEvent(_answer.emplace(), nxTime::Never))
        DeliverAnswer();
    _answer.reset();
    _Reschedule();
}

void nxTrading::_AdjustAccounts(nxMarket& market, const nxAdjustment& adjustment)
{
    Market& known = _markets[market.index];
    nxAdjusted sum;
    for (const nxLedger::AdjustedJob& job : _ledger.Adjust(known.venueProduct, adjustment)) {
        sum += job.adjusted;
        _record.WriteCash(job.job, adjustment, job.adjusted);
        nxHostProduct* const product = _jobs.Get(job.job).GetJob().FindProduct(market.product.GetName());
        if (product != nullptr) product->GetAccount().Adjust(adjustment, job.adjusted);
    }
    if (sum.hasPosition) known.accounts->everybody.Adjust(adjustment, sum);
    _ShowPositions(known);
}
