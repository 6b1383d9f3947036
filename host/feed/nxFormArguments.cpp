#include "host/feed/nxFormArguments.h"

#include "base/time/nxTime.h"
#include "host/feed/nxFeedTime.h"

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

std::optional<std::string> nxSetBarPeriods(const std::vector<std::string>& texts,
                                           std::map<std::string, long long, std::less<>>& periods)
{
    for (const std::string& text : texts) {
        const std::size_t equals = text.rfind('=');
        const std::size_t begin = equals == std::string::npos ? 0 : equals + 1;
        long long period = 0;
        if (equals == 0 || !nxFeedTime::SetPeriodFromText(std::string_view(text).substr(begin), period))
            return "--bar-period " + text + ": is no [PRODUCT=]PERIOD, such as 30s, 1m, 4h, 1d or ES=5m";
        periods[equals == std::string::npos ? std::string() : text.substr(0, equals)] = period;
    }
    return std::nullopt;
}
