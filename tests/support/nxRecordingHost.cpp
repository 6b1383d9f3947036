#include "tests/support/nxRecordingHost.h"

#include "scriptFramework/job/nxAlgoJobObject.h"

std::string nxRecordingHost::TakeCalls()
{
    std::string all;
    for (const std::string& call : calls)
        all += (all.empty() ? "" : " ") + call;
    calls.clear();
    return all;
}

nxAlgoProductObject* nxRecordingHost::GetProduct(const std::string& name)
{
    const auto found = products.find(name);
    return found == products.end() ? nullptr : found->second.get();
}

nxErrorEnum nxRecordingHost::_Answer(const char* call)
{
    calls.emplace_back(call);
    return subscriptionAnswer;
}

void nxRecordingHost::LogText(const std::string& text)
{
    if (!throwOnLogText.empty()) throw std::runtime_error(throwOnLogText);
    calls.push_back(text);
}

void nxRecordingHost::StartTimer(const std::string& name, unsigned int interval)
{
    _Note("StartTimer", name, interval);
}

void nxRecordingHost::Shutdown()
{
    calls.emplace_back("Shutdown");
    if (stopOnShutdown != nullptr) stopOnShutdown->StopJob();
}

void nxRecordingHost::OnEventWindow(nxAlgoEventWindowObject& window)
{
    calls.emplace_back("OnEventWindow");
    if (windowJob != nullptr) static_cast<void>(windowJob->OnEventWindow(window));
}

nxAlgoOrderObject* nxRecordingHost::GetOrder(unsigned int id)
{
    _Note("GetOrder", id);
    return id == 12 ? order12 : nullptr;
}

nxAlgoDataStoreObject* nxRecordingHost::GetDataStore(const std::string& name, bool create)
{
    _Note("GetDataStore", name, create);
    return create || name == "old" ? dataStore : nullptr;
}

nxVorantParameter* nxRecordingHost::GetParameter(const std::string& id) const
{
    const auto found = parameters.find(id);
    return found == parameters.end() ? nullptr : found->second->CopyInstance();
}

bool nxRecordingHost::SetParameter(const std::string& name, const std::string& value)
{
    _Note("SetParameter", name, value);
    return refusal.empty();
}

std::string nxRecordingHost::GetDynamicParameter(const std::string& tag, std::string name)
{
    _Note("GetDynamicParameter", tag, name);
    return "value of " + name;
}

bool nxRecordingHost::SendUserLog(const std::map<std::string, std::string>& fields, std::string& error)
{
    std::string all;
    for (const auto& [name, value] : fields)
        all += (all.empty() ? "" : ",") + name + "=" + value;
    _Note("SendUserLog", all);
    error += refusal;
    return refusal.empty();
}

nxDecimal nxRecordingHost::GetPandL(const nxCurrencyEnum& currency)
{
    _Note("GetPandL", currency.GetAsString());
    return pandL;
}

bool nxRecordingHost::SetChartLine(const std::string& chartID, const std::string& lineID, double value,
                                   unsigned int colour)
{
    _Note("SetChartLine", chartID, lineID, value, colour);
    return refusal.empty();
}

bool nxRecordingHost::RemoveChartLine(const std::string& chartID, const std::string& lineID)
{
    _Note("RemoveChartLine", chartID, lineID);
    return refusal.empty();
}
