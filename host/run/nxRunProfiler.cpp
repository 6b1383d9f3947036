#include "host/run/nxRunProfiler.h"

#include <fmt/format.h>

#include "base/values/nxTextStream.h"
#include "host/report/nxProfilePage.h"

namespace {

const char* GetKind(const nxFeedEvent& event)
{
    switch (event.kind) {
        case nxFeedKind::Quote:
            return event.quote.IsTrade() ? "trade" : "quote";
        case nxFeedKind::Bar:
            return "bar";
        default:
            return "depth";
    }
}

}  // namespace

std::optional<std::string> nxRunProfiler::Open()
{
    if (_options.profileFile.empty()) return std::nullopt;
    return _page.Open(_options.profileFile);
}

void nxRunProfiler::Follow(nxJobList& jobs)
{
    const unsigned int instructions = _options.profileFile.empty() ? 0 : _options.profileEvery;
    for (const auto& runner : jobs)
        runner->SetProfiler(&_jobs.emplace_back(instructions, _options.profilesMemory, _moment));
}

void nxRunProfiler::OnStep(const nxFeedEvent* event, long long time)
{
    _moment = {event == nullptr ? nullptr : GetKind(*event), event == nullptr ? 0 : event->product, time};
}

void nxRunProfiler::BeforeEnd(nxJobList& jobs)
{
    for (std::size_t i = 0; i < jobs.GetCount(); ++i)
        if (!jobs.Get(i).IsOver()) _jobs[i].EndMemory(jobs.Get(i).GetJob().GetObject());
}

std::optional<std::string> nxRunProfiler::Write(nxJobList& jobs, const nxFeedProductTable& products,
                                                nxRunOutput& output)
{
    nxProfile profile;
    profile.program = "algoserver " NX_VERSION;
    profile.data = _options.data;
    profile.interval = _options.profileEvery;
    const auto tell = [&](const nxJobProfiler::Moment& moment) {
        return moment.kind == nullptr
                   ? std::string()
                   : fmt::format("{} of {}", moment.kind, products.Get(moment.product).GetName());
    };
    for (std::size_t i = 0; i < _jobs.size(); ++i) {
        const nxJobRunner& runner = jobs.Get(i);
        const std::string& name = _options.jobs[i].name;
        profile.title += (i == 0 ? "" : ", ") + name;
        profile.jobs.push_back(_jobs[i].Make(name, runner.GetSource(), tell));
    }
    if (_options.profilesMemory) nxProfilePage::WriteMemory(output.GetErr(), profile);
    if (!_page.IsOpen()) return std::nullopt;
    nxTextStream text;
    nxProfilePage::Write(text, profile);
    _page.Write(text.view());
    const auto failure = _page.Close();
    if (!failure && _options.profileFile != "-") output.Complain("profile     " + _options.profileFile);
    return failure;
}
