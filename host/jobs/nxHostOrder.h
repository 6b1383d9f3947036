#pragma once

#include <string>
#include <utility>

#include "base/records/nxOrderTransaction.h"
#include "host/jobs/nxShownOrder.h"
#include "scriptFramework/orders/nxAlgoOrderUpdateObject.h"

class nxHostProduct;
class nxTradingJob;

// An order of the reference host in the hands of the job that made it: requests go to the venue, answers come
// into its ticket, and both into the run's record. Owned by that job; another one that looks at the order has
// an nxForeignOrder over it. Used on the run's thread.
class nxHostOrder final : public nxShownOrder
{
public:
    // In createOrder's vocabulary.
    struct Texts
    {
        const std::string &side, &type, &exec, &time, &spreadSpec;
    };

    // The record of the order whose update a script read last: one for each job, since records are large and
    // updates are kept for life.
    struct ShownRecord
    {
        const nxHostOrder* order = nullptr;
        nxOrderTransaction transaction;

        void Forget(const nxHostOrder& changed)
        {
            if (order == &changed) order = nullptr;
        }
    };

    nxHostOrder(nxTradingJob& job, nxHostProduct& product, const Texts& texts, unsigned int id);
    nxHostOrder(nxTradingJob& job, nxHostProduct& product, nxOrderTicket ticket);

    const nxOrderTicket& GetTicket() const override { return _ticket; }
    nxTradingJob& GetOwner() const;
    nxHostProduct& GetHostProduct() const;
    // Price and volume; both null before the first.
    std::pair<nxDecimal, nxVolume> GetLastFill() const { return {_GetLastFillPrice(), _GetLastFillVolume()}; }
    // Before it is first worked.
    void SetSpreadInstance(const std::string& text);

    // Takes over what the exchange tells.
    void Apply(const nxExchangeEvent& event);
    // Of the event that was applied last. It stays where it is and shows the newest event. Made with the
    // first event that a script is told of.
    nxAlgoOrderUpdateObject& GetUpdate();
    // Sends an order that closes a position, of that volume. atOnce: at the end of a run, to take what is
    // shown then.
    void Close(unsigned int volume, bool atOnce);
    // Asks for the rest to be taken out of the market; null, or why that cannot be.
    const char* Pull();

protected:
    bool _WorkOrder(const nxAlgoOrderParameters& parameters) override;
    bool _PullOrder(const nxVolume& algoID) override;
    std::string _GetAccount() override;
    const nxOrderTransaction* _GetLastTransaction() const override;
    void _GetLastTimes(nxTimeStamp& update, nxDateTime& fill) const override;

private:
    void _Record(const char* request, const nxOrderTerms& terms) const;
    void _RecordEvent(const nxExchangeEvent& event) const;

    nxOrderTicket _ticket;
    nxAlgoOrderUpdateObject* _update = nullptr;  // the job's
};
