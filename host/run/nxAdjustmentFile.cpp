#include "host/run/nxAdjustmentFile.h"

#include <fmt/format.h>

#include "base/values/nxStringHelper.h"
#include "host/feed/nxCsvTable.h"
#include "host/feed/nxFeedTime.h"

namespace {

enum Column : std::size_t { Time, Product, Kind, Value };

// "3:2", or "1.5".
bool ReadRatio(const std::string& text, nxAdjustment& adjustment)
{
    constexpr long long most = 1'000'000;
    const std::size_t colon = text.find(':');
    if (colon != text.npos) {
        const std::string_view view(text);
        if (!nxStringHelper::SetFromString(view.substr(0, colon), adjustment.newLots).IsSuccess() ||
            !nxStringHelper::SetFromString(view.substr(colon + 1), adjustment.oldLots).IsSuccess())
            return false;
    } else {
        nxDecimal ratio;
        if (!ratio.SetFromString(text).IsSuccess()) return false;
        ratio.Normalise(0);
        adjustment.newLots = ratio.GetMantissa();
        adjustment.oldLots = 1;
        for (unsigned char place = 0; place < ratio.GetDecimalPlaces() && adjustment.oldLots <= most; ++place)
            adjustment.oldLots *= 10;
    }
    return adjustment.newLots > 0 && adjustment.newLots <= most && adjustment.oldLots > 0 &&
           adjustment.oldLots <= most;
}

bool ReadValue(nxCsvTable& table, nxAdjustment& adjustment)
{
    const std::string& text = table.Get(Value);
    if (adjustment.kind == nxAdjustmentKind::Split)
        return ReadRatio(text, adjustment) ||
               table.Refuse(Value, fmt::format("value: a split is NEW:OLD lots such as 3:2, each from 1 to "
                                               "1000000, or their ratio: \"{}\"",
                                               text));
    if (adjustment.value.SetFromString(text).IsSuccess()) return true;
    return table.Refuse(Value, fmt::format("value: is not a number: \"{}\"", text));
}

bool ReadRow(nxCsvTable& table, std::vector<nxAdjustment>& adjustments)
{
    nxAdjustment& adjustment = adjustments.emplace_back();
    if (const char* reason = nxFeedTime::SetFromText(table.Get(Time), adjustment.time))
        return table.Refuse(Time, fmt::format("time: {}: \"{}\"", reason, table.Get(Time)));
    adjustment.product = table.Get(Product);
    if (adjustment.product.empty()) return table.Refuse(Product, "product: is empty");
    for (const auto kind : {nxAdjustmentKind::Funding, nxAdjustmentKind::Dividend, nxAdjustmentKind::Split,
                            nxAdjustmentKind::Roll})
    {
        adjustment.kind = kind;
        if (table.Get(Kind) == nxGetName(kind)) return ReadValue(table, adjustment);
    }
    return table.Refuse(
        Kind, fmt::format("kind: is none of funding, dividend, split, roll: \"{}\"", table.Get(Kind)));
}

}  // namespace

bool nxAdjustmentFile::Read(const std::string& path, std::vector<nxAdjustment>& adjustments,
                            nxFeedError& error)
{
    nxCsvTable table({{"time"}, {"product"}, {"kind"}, {"value"}});
    if (table.Read(path, "file of adjustments", [&] { return ReadRow(table, adjustments); })) return true;
    error = table.GetError();
    return false;
}
