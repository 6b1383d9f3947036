#include "scriptFramework/job/nxAlgoJobInterface.h"

const std::string& nxAlgoJobInterface::GetLogPrefix() const
{
    static const std::string prefix = "BASE";
    return prefix;
}

nxSyntheticChildOrderTypeEnum nxAlgoJobInterface::GetSyntheticChildOrderType()
{
    return {};
}
