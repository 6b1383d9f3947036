#include "scriptFramework/supervision/nxAlgoVorantJobObject.h"

#include "base/log/nxLogMessage.h"
#include "base/threads/nxMutexGuard.h"
#include "scriptFramework/supervision/nxVorantAlgorithmSpec.h"

using Self = nxAlgoVorantJobObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"stop", &Self::stop},
    {"subscribe", &Self::subscribe},
    {"getOutputParameter", &Self::getOutputParameter},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"id", &Self::Get_id, nullptr},
    {"name", &Self::Get_name, nullptr},
    {"reference", &Self::Get_reference, nullptr},
    {"owner", &Self::Get_owner, nullptr},
    {"running", &Self::Get_running, nullptr},
    {"userText1", &Self::Get_userText1, nullptr},
    {"userText2", &Self::Get_userText2, nullptr},
    {"userText3", &Self::Get_userText3, nullptr},
    {"userStateLevel", &Self::Get_userStateLevel, nullptr},
    {"userStateText", &Self::Get_userStateText, nullptr},
    {"transactionCount", &Self::Get_transactionCount, nullptr},
    {"isContext", &Self::Get_isContext, nullptr},
    {"selectedProduct", &Self::Get_selectedProduct, nullptr},
    {"selectedPrice", &Self::Get_selectedPrice, nullptr},
    {"selectedVolume", &Self::Get_selectedVolume, nullptr},
    {"selectedSide", &Self::Get_selectedSide, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

template <class Field>
Field nxAlgoVorantJobObject::_ReadStatus(const Field& (nxVorantJobStatus::*getter)() const)
{
    const nxMutexGuard guard(_statusMutex);
    return (_status.*getter)();
}

bool nxAlgoVorantJobObject::stop(nxLuaParameters&, nxLuaResults&)
{
    static_cast<void>(_Stop());
    return true;
}

bool nxAlgoVorantJobObject::subscribe(nxLuaParameters&, nxLuaResults&)
{
    static_cast<void>(_Subscribe());
    return true;
}

bool nxAlgoVorantJobObject::getOutputParameter(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1)
        return results.Fail("vorantJob:getOutputParameter requires one argument [name]");
    const std::string name = parameters.Parameter(1).GetString();
    {
        const nxMutexGuard guard(_statusMutex);
        if (_status.GetOutputParameters() != _outputParameterText) {
            _outputParameterText = _status.GetOutputParameters();
            _outputParameters.clear();
            // What can be read of a faulty text counts.
            static_cast<void>(nxVorantAlgorithmSpec::ExtractParametersFromUserString(_outputParameterText,
                                                                                     _outputParameters));
        }
    }
    const auto found = _outputParameters.find(name);
    if (found == _outputParameters.end()) {
        nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "vorantJob:getOutputParameter parameter : ", name,
                     " not set ");
        results.AddNull();
        return true;
    }
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "vorantJob:getOutputParameter parameter : ", name,
                 " , value : ", found->second);
    results.Add(found->second);
    return true;
}

bool nxAlgoVorantJobObject::Get_id(nxLuaResults& results)
{
    results.Add(_id);
    return true;
}

bool nxAlgoVorantJobObject::Get_name(nxLuaResults& results)
{
    results.Add(_name);
    return true;
}

bool nxAlgoVorantJobObject::Get_reference(nxLuaResults& results)
{
    results.Add(_GetReference());
    return true;
}

bool nxAlgoVorantJobObject::Get_owner(nxLuaResults& results)
{
    results.Add(_owner);
    return true;
}

bool nxAlgoVorantJobObject::Get_running(nxLuaResults& results)
{
    results.Add(_IsRunning());
    return true;
}

bool nxAlgoVorantJobObject::Get_userText1(nxLuaResults& results)
{
    results.Add(_ReadStatus(&nxVorantJobStatus::GetUserText1));
    return true;
}

bool nxAlgoVorantJobObject::Get_userText2(nxLuaResults& results)
{
    results.Add(_ReadStatus(&nxVorantJobStatus::GetUserText2));
    return true;
}

bool nxAlgoVorantJobObject::Get_userText3(nxLuaResults& results)
{
    results.Add(_ReadStatus(&nxVorantJobStatus::GetUserText3));
    return true;
}

bool nxAlgoVorantJobObject::Get_userStateLevel(nxLuaResults& results)
{
    const nxLogLevelEnum level = _ReadStatus(&nxVorantJobStatus::GetUserStateLevel);
    results.Add(level == nxLogLevel_Error  ? "ERROR"
                : level == nxLogLevel_Warn ? "WARN"
                : level == nxLogLevel_Info ? "INFO"
                                           : "");
    return true;
}

bool nxAlgoVorantJobObject::Get_userStateText(nxLuaResults& results)
{
    results.Add(_ReadStatus(&nxVorantJobStatus::GetUserStateText));
    return true;
}

bool nxAlgoVorantJobObject::Get_transactionCount(nxLuaResults& results)
{
    results.Add(_ReadStatus(&nxVorantJobStatus::GetTransactionCount));
    return true;
}

bool nxAlgoVorantJobObject::Get_isContext(nxLuaResults& results)
{
    results.Add(_isContext);
    return true;
}

bool nxAlgoVorantJobObject::Get_selectedProduct(nxLuaResults& results)
{
    results.Add(_selectedProduct);
    return true;
}

bool nxAlgoVorantJobObject::Get_selectedPrice(nxLuaResults& results)
{
    nxDecimal price;
    {
        const nxMutexGuard guard(_selectionMutex);
        price = _selectedPrice;
    }
    results.Add(price);
    return true;
}

bool nxAlgoVorantJobObject::Get_selectedVolume(nxLuaResults& results)
{
    nxVolume volume;
    {
        const nxMutexGuard guard(_selectionMutex);
        volume = _selectedVolume;
    }
    results.Add(volume);
    return true;
}

bool nxAlgoVorantJobObject::Get_selectedSide(nxLuaResults& results)
{
    results.Add(_selectedSide);
    return true;
}
