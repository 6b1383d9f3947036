#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "base/enums/nxErrorEnum.h"
#include "base/enums/nxSyntheticOrderTypeEnum.h"
#include "scriptFramework/supervision/nxXMLDataObject.h"

class nxVorantLimit;
class nxVorantParameterDefinition;

// The definition of an algorithm: its script, parameters and limits. A value, except that it only points at
// the limits and parameter definitions, which are the host's and outlive it and its copies.
class nxVorantAlgorithmSpec : public nxXMLDataObject
{
public:
    nxVorantAlgorithmSpec* CopyInstance() const override { return new nxVorantAlgorithmSpec(*this); }
    nxXMLDataObject* CreateInstance() const override { return new nxVorantAlgorithmSpec; }
    unsigned int GetDataCategoryTypeID() const override { return 0x414C474F; }  // "ALGO"

    // The pairs of a watched job's output parameters, `name=value` joined by ';', into the map. A backslash
    // takes the character behind it for itself, as ';', '=' and '\' need, and one at the end stands for
    // itself. Any text can be read: a pair ends its name at the first '=', empty pairs count for nothing, the
    // last of a repeated name holds. nxError_GeneralFailure for a pair without '=', which is left out.
    [[nodiscard]] static nxErrorEnum ExtractParametersFromUserString(
        const std::string& text, std::map<std::string, std::string>& parameters);
    // The text that the above reads back to the same map.
    static std::string JoinParametersToUserString(const std::map<std::string, std::string>& parameters);

    bool GetHideParentOrder() const { return _hideParentOrder; }
    void SetHideParentOrder(bool hide) { _hideParentOrder = hide; }
    const std::vector<nxVorantLimit*>& GetLimits() const { return _limits; }
    void SetLimits(const std::vector<nxVorantLimit*>& limits) { _limits = limits; }
    const std::set<std::string>& GetModules() const { return _modules; }
    void SetModules(const std::set<std::string>& modules) { _modules = modules; }
    const std::vector<nxVorantParameterDefinition*>& GetScriptOutputParameterDefinitions() const
    {
        return _scriptOutputParameterDefinitions;
    }
    std::vector<nxVorantParameterDefinition*>& GetScriptOutputParameterDefinitions()
    {
        return _scriptOutputParameterDefinitions;
    }
    const std::vector<nxVorantParameterDefinition*>& GetScriptParameterDefinitions() const
    {
        return _scriptParameterDefinitions;
    }
    std::vector<nxVorantParameterDefinition*>& GetScriptParameterDefinitions()
    {
        return _scriptParameterDefinitions;
    }
    const std::string& GetScriptSourceCode() const { return _scriptSourceCode; }
    void SetScriptSourceCode(const std::string& text) { _scriptSourceCode = text; }
    const nxSyntheticOrderTypeEnum& GetSyntheticOrderType() const { return _syntheticOrderType; }
    void SetSyntheticOrderType(const nxSyntheticOrderTypeEnum& type) { _syntheticOrderType = type; }

private:
    bool _hideParentOrder = false;
    std::vector<nxVorantLimit*> _limits;
    std::set<std::string> _modules;
    std::vector<nxVorantParameterDefinition*> _scriptOutputParameterDefinitions;
    std::vector<nxVorantParameterDefinition*> _scriptParameterDefinitions;
    std::string _scriptSourceCode;
    nxSyntheticOrderTypeEnum _syntheticOrderType;
};
