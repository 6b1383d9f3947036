#pragma once

#include "host/jobs/nxShownOrder.h"

class nxHostOrder;
class nxHostProduct;

// Another job's order, to look at: the script can change nothing through it. Owned by the job that looks,
// whose product it has. Used on the run's thread.
class nxForeignOrder final : public nxShownOrder
{
public:
    // The original stays for the run.
    nxForeignOrder(nxAlgoJobInterface& viewer, nxHostProduct& product, const nxHostOrder& original);

    const nxOrderTicket& GetTicket() const override;
    // Takes over what is not in the ticket: the label and the last fill.
    void Refresh();

    bool IsCurrentJob() override { return false; }

protected:
    bool _WorkOrder(const nxAlgoOrderParameters& parameters) override;
    bool _PullOrder(const nxVolume& algoID) override;
    std::string _GetAccount() override;

private:
    bool _RefuseAny();

    const nxHostOrder& _original;
};
