#include "host/jobs/nxShownOrder.h"

#include "host/exchange/nxVenue.h"
#include "host/jobs/nxLaunchedJob.h"
#include "host/jobs/nxOrderServices.h"

std::string nxShownOrder::GetBracketStopLossType()
{
    const nxOrderTicket::Bracket bracket = GetTicket().GetBracket();
    return bracket.stopLoss.IsValid() ? nxGetTypeText(!bracket.stopIsLimit) : "";
}

unsigned int nxShownOrder::GetOrderQPos()
{
    const auto& job = static_cast<const nxLaunchedJob&>(*GetJob());  // who makes every order of the host
    const nxExchangeOrder* const order = job.GetServices().orders->GetVenue()->FindOrder(GetID());
    return order != nullptr && order->isResting && !order->kind.isMarket ? order->ahead.GetValue() : 0;
}

nxAlgoOrderObject* nxShownOrder::_GetParent()
{
    const unsigned int parent = GetTicket().GetParent();
    return parent == 0 ? nullptr : GetJob()->GetOrder(parent);
}

void nxShownOrder::_SetLastExchangeFillTime(nxAlgoTimeStamp& time)
{
    const long long known = GetTicket().GetLastFillTime();
    if (known != nxOrderTicket::NoTime) time.SetTimeStamp(nxTimeStamp::FromNanoseconds(known));
}

void nxShownOrder::_SetLastVorantUpdateTime(nxAlgoTimeStamp& time)
{
    const long long known = GetTicket().GetLastUpdateTime();
    if (known != nxOrderTicket::NoTime) time.SetTimeStamp(nxTimeStamp::FromNanoseconds(known));
}

bool nxShownOrder::_Refuse(const std::string& reason)
{
    GetJob()->SetError(reason);
    return false;
}
