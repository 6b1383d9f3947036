#include "scriptFramework/lua/nxScriptHelper.h"

#include "base/values/nxStringHelper.h"

std::string nxScriptHelper::Tell(unsigned int line) const
{
    if (modules.empty()) return nxStringHelper::GetAsString(line);
    if (line > lineOffset) return nxStringHelper::GetAsString(line - lineOffset + 1);
    for (const Module& module : modules) {
        if (line < module.firstLine || line > module.lastLine) continue;
        return nxStringHelper::GetAsString(line - module.firstLine + 1) + ":" + module.name;
    }
    return nxStringHelper::GetAsString(line);
}
