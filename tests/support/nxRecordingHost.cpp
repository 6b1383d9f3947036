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
    calls.push_back("StartTimer(" + name + "," + std::to_string(interval) + ")");
}

void nxRecordingHost::Shutdown()
{
    calls.emplace_back("Shutdown");
    if (stopOnShutdown != nullptr) stopOnShutdown->StopJob();
}
