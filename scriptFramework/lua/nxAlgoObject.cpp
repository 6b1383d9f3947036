#include "scriptFramework/lua/nxAlgoObject.h"

#include "scriptFramework/job/nxAlgoJobInterface.h"

const std::string& nxAlgoObject::GetLogPrefix() const
{
    static const std::string none;
    return _job == nullptr ? none : _job->GetLogPrefix();
}
