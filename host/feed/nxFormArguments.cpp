#include "host/feed/nxFormArguments.h"

#include "base/time/nxTime.h"

std::optional<std::string> nxFormArguments::Apply(nxFileFormOptions& form) const
{
    form.columns = columns;
    form.product = product;
    if (!layout.empty()) {
        form.layout = nxFeedLayout::Find(layout);
        if (form.layout == nullptr)
            return "--layout " + layout + ": there is no such layout; 'algoserver layouts' lists them";
    }
    std::string reason;
    if (!zone.empty() && !(form.zone = nxTimeZone::Find(zone, reason))) return "--zone: " + reason;
    if (!date.empty()) {
        long long time = 0;
        if (const char* const refusal = nxTimeText().Read(date, time))
            return "--date " + date + ": " + refusal + "; it is written as 2024-08-09";
        form.day = time / nxTime::NanosecondsPerDay;
    }
    if (!dateOrder.empty()) form.isDayFirst = dateOrder == "dmy";
    if (!priceScale.empty() && (!form.priceScale.SetFromString(priceScale).IsSuccess() ||
                                !form.priceScale.IsValid() || form.priceScale <= nxDecimalZero))
        return "--price-scale " + priceScale + ": is no number above 0, such as 0.0001";
    return std::nullopt;
}
