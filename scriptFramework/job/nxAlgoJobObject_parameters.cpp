#include <memory>

#include "base/log/nxLogMessage.h"
#include "scriptFramework/job/nxAlgoJobInterface.h"
#include "scriptFramework/job/nxAlgoJobObject.h"
#include "scriptFramework/lua/nxScriptAccount.h"
#include "scriptFramework/supervision/nxVorantParameterTemplate.h"

namespace {

const std::string Published = "published ";  // before the names that are no output parameters

void AddValue(nxLuaResults& results, const nxDecimal& value)
{
    results.Add(value);
}

void AddValue(nxLuaResults& results, const nxVolume& value)
{
    results.Add(value);
}

// Here and for integers only null is nil: scripts see no-change as the number that it is, unlike above.
void AddValue(nxLuaResults& results, const nxDoubleValueWrapper& value)
{
    results.Add(value.GetValue());
}

void AddValue(nxLuaResults& results, const nxIntValue& value)
{
    results.Add(static_cast<long long>(value.GetValue()));
}

void AddValue(nxLuaResults& results, const nxBoolEnum& value)
{
    results.Add(value == nxBool_True);
}

// Nil for a class of the host's own that says it has one of our types.
template <class Parameter>
void AddTyped(nxLuaResults& results, const nxVorantParameter& parameter)
{
    if (const auto* typed = dynamic_cast<const Parameter*>(&parameter)) {
        AddValue(results, typed->GetValue());
    } else {
        results.AddNull();
    }
}

void AddParameter(nxLuaResults& results, const nxVorantParameter& parameter, const std::string& text)
{
    if (parameter.IsNull()) return results.AddNull();
    switch (parameter.GetParameterType().GetValue()) {
        case nxVorantParameterType_Price:
            return AddTyped<nxVorantPriceParameter>(results, parameter);
        case nxVorantParameterType_Volume:
            return AddTyped<nxVorantVolumeParameter>(results, parameter);
        case nxVorantParameterType_Decimal:
            return AddTyped<nxVorantDecimalParameter>(results, parameter);
        case nxVorantParameterType_Double:
            return AddTyped<nxVorantDoubleParameter>(results, parameter);
        case nxVorantParameterType_Integer:
            return AddTyped<nxVorantIntegerParameter>(results, parameter);
        case nxVorantParameterType_Bool:
            return AddTyped<nxVorantBoolParameter>(results, parameter);
        default:
            return results.Add(text);
    }
}

// The host is asked once for the log line and once more for the result.
template <class Ask>
bool AddSelected(const nxAlgoJobObject& job, nxLuaResults& results, const std::string& property,
                 const char* label, Ask ask)
{
    if (!job.GetJob()->HasContext())
        return results.Fail("Job doesn't have context. Therefore cannot use " + property);
    if (label != nullptr && nxLogManager::ShouldLog(nxLogLevel::Info))
        nxLogMessage(nxLogLevel::Info, job.GetLogPrefix(), label, ask());
    results.Add(ask());
    return true;
}

}  // namespace

bool nxAlgoJobObject::getParameter(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail("getParameter requires 1 argument [id]");
    const std::string id = parameters.Parameter(1).GetString();
    const std::unique_ptr<nxVorantParameter> parameter(GetJob()->GetParameter(id));
    if (parameter == nullptr) {
        nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Get Parameter : ", id, " = [NIL]");
        results.AddNull();
        return true;
    }
    std::string text;
    parameter->PersistValueToString(text);
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Get Parameter : ", id, " = ", text, " ( ",
                 parameter->GetParameterType(), " )");
    AddParameter(results, *parameter, text);
    return true;
}

bool nxAlgoJobObject::setOutputParameter(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 2) return results.Fail("setOutputParameter requires 2 arguments [name,value]");
    const std::string name = parameters.Parameter(1).GetString();
    const std::string value = parameters.Parameter(2).GetString();
    if (!results.Keeps(nxScriptLimit::Outputs, name, value.size())) return false;
    if (GetJob()->SetParameter(name, value)) {
        nxLogMessage(nxLogLevel::Detail, GetLogPrefix(), "Set Output Parameter : ", name, " = ", value,
                     " ok");
        return true;
    }
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Set Output Parameter : ", name, " = ", value, " failed");
    return results.Fail("setOutputParameter failed " + name + " , " + value);
}

bool nxAlgoJobObject::getDynamicParameter(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 2) return results.Fail("getDynamicParameter requires 2 arguments [tag,name]");
    const std::string tag = parameters.Parameter(1).GetString();
    const std::string name = parameters.Parameter(2).GetString();
    const std::string value = GetJob()->GetDynamicParameter(tag, name);
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Get Dynamic Parameter : ", name, " Tag : ", tag, " : ",
                 value);
    results.Add(value);
    return true;
}

bool nxAlgoJobObject::sendParameter(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 3)
        return results.Fail("sendParameter requires 3 arguments. [ tag, name, value ]");
    const std::string tag = parameters.Parameter(1).GetString();
    const std::string name = parameters.Parameter(2).GetString();
    const std::string value = parameters.Parameter(3).GetString();
    if (!results.Keeps(nxScriptLimit::Memory, "sendParameter", tag.size() + name.size() + value.size()))
        return false;
    GetJob()->SendParameter(tag, name, value);
    return true;
}

bool nxAlgoJobObject::publish(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 2) return results.Fail("publish requires 2 arguments [name,value]");
    const std::string name = parameters.Parameter(1).GetString();
    const std::string value = parameters.Parameter(2).GetString();
    if (!results.Keeps(nxScriptLimit::Outputs, Published + name, value.size())) return false;
    GetJob()->PublishParameter(name, value);
    return true;
}

bool nxAlgoJobObject::hasContext(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(GetJob()->HasContext());
    return true;
}

bool nxAlgoJobObject::setReference(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail("setReference requires 1 argument [text]");
    const std::string text = parameters.Parameter(1).GetString();
    if (!GetJob()->IsInOnInit()) return results.Fail("setReference can only be called via OnInit");
    if (!results.Keeps(nxScriptLimit::Memory, "setReference", text.size())) return false;
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "SetReference ", text);
    GetJob()->SetReference(text);
    return true;
}

bool nxAlgoJobObject::Get_selectedProduct(nxLuaResults& results)
{
    return AddSelected(*this, results, "selectedProduct",
                       "Selected Product : ", [this] { return GetJob()->GetSelectedProduct(); });
}

bool nxAlgoJobObject::Get_selectedVolume(nxLuaResults& results)
{
    return AddSelected(*this, results, "selectedVolume",
                       "Selected Volume : ", [this] { return GetJob()->GetSelectedVolume(); });
}

bool nxAlgoJobObject::Get_selectedPrice(nxLuaResults& results)
{
    return AddSelected(*this, results, "selectedPrice",
                       "Selected Price : ", [this] { return GetJob()->GetSelectedPrice(); });
}

// Also without a context, which the getter asks for.
bool nxAlgoJobObject::Set_selectedPrice(const nxLuaParameter& parameter)
{
    const double price = parameter.GetNumber();
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Set Selected Price : ", price);
    GetJob()->SetSelectedPrice(price);
    return true;
}

bool nxAlgoJobObject::Get_selectedSide(nxLuaResults& results)
{
    return AddSelected(*this, results, "selectedSide",
                       "Selected Side : ", [this] { return GetJob()->GetSelectedSide(); });
}

bool nxAlgoJobObject::Get_selectedSpreadSpec(nxLuaResults& results)
{
    return AddSelected(*this, results, "selectedSpreadSpec", nullptr,
                       [this] { return GetJob()->GetSelectedSpreadSpec(); });
}

bool nxAlgoJobObject::Get_account(nxLuaResults& results)
{
    results.Add(GetJob()->GetAccount());
    return true;
}

bool nxAlgoJobObject::Get_transactionCount(nxLuaResults& results)
{
    results.Add(GetJob()->GetTransactionCount());
    return true;
}

bool nxAlgoJobObject::Get_tag(nxLuaResults& results)
{
    results.Add(GetJob()->GetTag());
    return true;
}

bool nxAlgoJobObject::Set_tag(const nxLuaParameter& parameter)
{
    const std::string tag = parameter.GetString();
    parameter.Require(parameter.GetAccount()->Keeps(nxScriptLimit::Memory, "tag", tag.size()));
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Set Tag  ", tag);
    GetJob()->SetTag(tag);
    return true;
}
