#include "base/enums/nxProductTypeEnum.h"

const char* nxProductTypeEnum::GetAsCode() const
{
    switch (GetValue()) {
        case nxProductType_Future:
            return "F";
        case nxProductType_Option:
            return "O";
        case nxProductType_Strategy:
            return "S";
        case nxProductType_SyntheticStrategy:
            return "SS";
        case nxProductType_Stock:
            return "E";
        case nxProductType_ForeignExchange:
            return "FX";
        case nxProductType_Crypto:
            return "C";
        case nxProductType_Index:
            return "I";
        case nxProductType_Bond:
            return "B";
        case nxProductType_Fund:
            return "FD";
        default:
            return "";
    }
}
