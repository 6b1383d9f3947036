#include "host/jobs/nxForeignOrder.h"

#include "host/jobs/nxHostOrder.h"
#include "host/jobs/nxTradingJob.h"

nxForeignOrder::nxForeignOrder(nxAlgoJobInterface& viewer, nxHostProduct& product,
                               const nxHostOrder& original)
    : nxShownOrder(&viewer, &product), _original(original)
{
    SetSide(original.GetSide());
}

const nxOrderTicket& nxForeignOrder::GetTicket() const
{
    return _original.GetTicket();
}

void nxForeignOrder::Refresh()
{
    SetReference(_original.GetReference());
    const auto [price, volume] = _original.GetLastFill();
    if (volume.IsValid()) _SetLastFill(price, volume);
}

bool nxForeignOrder::_WorkOrder(const nxAlgoOrderParameters&)
{
    return _RefuseAny();
}

bool nxForeignOrder::_PullOrder(const nxVolume&)
{
    return _RefuseAny();
}

bool nxForeignOrder::_RefuseAny()
{
    const char* const end = GetTicket().FindEnd();
    return _Refuse(end == nullptr ? "the order is another job's" : end);
}

std::string nxForeignOrder::_GetAccount()
{
    return _original.GetOwner().GetAccount();
}
