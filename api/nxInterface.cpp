#include "api/nxInterface.h"

#include <string_view>

namespace {

struct SubjectPrefix
{
    nxEnumValue function;
    std::string_view prefix;
};

constexpr SubjectPrefix SubjectPrefixes[] = {
    {nxFunction_ExchangeOrder, "QLX.EO."},
    {nxFunction_ExchangeOrderTransaction, "QLX.EOT."},
    {nxFunction_Price, "QLX.P."},
    {nxFunction_MarketDepth, "QLX.D."},
    {nxFunction_StrategyDefinition, "QLX.SD."},
    {nxFunction_MarketByOrder, "QLX.MBO."},
    {nxFunction_PriceTradeVolumes, "QLX.PLV."},
    {nxFunction_TheoreticalPrice, "QLX.THEO."},
    {nxFunction_ReferenceLimitPrice, "QLX.RLP."},
    {nxFunction_IntraDayProductUpdate, "QLX.IDU."},
    {nxFunction_QuotePrice, "QLX.QP."},
    {nxFunction_ExchangeOrderWithPrice, "QLX.EOWP."},
    {nxFunction_News, "QLX.N."},
};

}  // namespace

nxErrorEnum nxInterface::GetLightSubscriptionSubject(std::string& subject, const nxFunctionEnum& function,
                                                     const std::string& key)
{
    if (key.empty()) return nxError_GeneralFailure;
    for (const SubjectPrefix& row : SubjectPrefixes) {
        if (function != row.function) continue;
        subject = std::string(row.prefix) + key;
        return {};
    }
    return nxError_GeneralFailure;
}
