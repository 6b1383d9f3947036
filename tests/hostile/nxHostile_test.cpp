// What scripts that mean harm come to: the attacks of attacks.lua, whose top tells its form.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <ostream>

#include "base/records/nxMarketDepth.h"
#include "base/records/nxOrderTransaction.h"
#include "base/records/nxPrice.h"
#include "base/records/nxPriceTradeVolumes.h"
#include "base/threads/nxStackThread.h"
#include "scriptFramework/job/nxAlgoJobObject.h"
#include "scriptFramework/market/nxAlgoMarketDepthObject.h"
#include "scriptFramework/market/nxAlgoPositionObject.h"
#include "scriptFramework/market/nxAlgoPriceObject.h"
#include "scriptFramework/market/nxAlgoPriceTradeVolumesObject.h"
#include "scriptFramework/market/nxAlgoStateObject.h"
#include "scriptFramework/orders/nxAlgoOrderUpdateObject.h"
#include "tests/support/nxRecordingHost.h"
#include "tests/support/nxRowFile.h"
#include "tests/support/nxTestOrder.h"

namespace {

struct Attack
{
    std::string name, limits, script;
    std::map<std::string, std::string> outcomes;  // by profile
    int line = 0;                                 // of the script's first
};

std::ostream& operator<<(std::ostream& out, const Attack& attack)
{
    return out << "attacks.lua:" << attack.line;
}

std::vector<Attack> ReadAttacks()
{
    std::ifstream file(NX_TEST_DIR "/hostile/attacks.lua");
    std::vector<Attack> attacks;
    int line = 0;
    for (std::string text; std::getline(file, text);) {
        ++line;
        const auto takes = [&text](const std::string& mark) {
            if (!text.starts_with(mark)) return false;
            text = nxTrim(text.substr(mark.size()));
            return true;
        };
        if (takes("--- ")) {
            attacks.push_back({text, {}, {}, {}, line});
        } else if (attacks.empty()) {
            continue;
        } else if (takes("-- limits:")) {
            attacks.back().limits = text;
        } else if (takes("-- both:")) {
            attacks.back().outcomes = {{"base", text}, {"strict", text}};
        } else if (takes("-- base:")) {
            attacks.back().outcomes["base"] = text;
        } else if (takes("-- strict:")) {
            attacks.back().outcomes["strict"] = text;
        } else {
            attacks.back().script += text + "\n";
        }
    }
    return attacks;
}

// What the host's frame of an event holds. It is made on the heap, so that a use of it after the event is one
// of freed memory.
struct Events
{
    explicit Events(nxRecordingHost& host, nxTestOrder& order)
        : price(&host, &quote, &quote, 1),
          depth(&host, &book, 2),
          update(&host, &order, &transaction, nxTimeStamp(1706702415, 0u)),
          state(&host, 4),
          position(&host, 5),
          volumes(&host, 6)
    {
        quote.SetBidPrice(nxDecimal::FromMantissa(995, 1));
        book.SetBid(nxDecimal::FromMantissa(99, 0), 5);
    }

    nxPrice quote;
    nxMarketDepth book;
    nxOrderTransaction transaction;
    nxAlgoPriceObject price;
    nxAlgoMarketDepthObject depth;
    nxAlgoOrderUpdateObject update;
    nxAlgoStateObject state;
    nxAlgoPositionObject position;
    nxAlgoPriceTradeVolumesObject volumes;
};

// Runs one attack through the life of a job, and gathers what it came to.
class Victim
{
public:
    Victim(nxScriptProfile profile, const std::string& limits)
    {
        _job->SetProfile(profile);
        _job->Isolate(1);
        nxScriptLimits values;
        for (const std::string& limit : nxGetWords(limits)) {
            const std::size_t sign = limit.find('=');
            const auto row = std::ranges::find(nxScriptLimitRows, limit.substr(0, sign),
                                               [](const nxScriptLimitRow& known) { return known.name; });
            EXPECT_NE(row, nxScriptLimitRows.end()) << "an unknown limit: " << limit;
            if (row != nxScriptLimitRows.end()) values.*row->member = std::stoull(limit.substr(sign + 1));
        }
        _job->SetLimits(values);
    }

    std::string Run(const std::string& script)
    {
        if (_Note("helper", _job->LoadScript(Helper)) && _Note("load", _job->LoadScript(script)) &&
            _Note("start", _job->StartJob()))
            _Deliver();
        _job.reset();
        _outcome += _host.TakeCalls();
        return nxTrim(_outcome);
    }

private:
    // told gathers what the attack wants to be known; tell adds what a function gives, or "no" where it
    // fails.
    static constexpr const char* Helper = R"lua(
told = {}
function tell(f, ...)
  local succeeded, value = pcall(f, ...)
  told[#told + 1] = succeeded and tostring(value) or "no"
end
function why(f, ...)
  local _, message = pcall(f, ...)
  told[#told + 1] = tostring(message):gsub("^[^:]*:%d+: ", "")
end
local concat = table.concat
function OnParameter() job:logText(concat(told, ", ")) end
)lua";

    void _Deliver()
    {
        for (int round = 0; round < 2; ++round) {
            const auto events = std::make_unique<Events>(_host, _order);
            _Note("OnPrice", _job->OnPrice(events->price));
            _Note("OnMarketDepth", _job->OnMarketDepth(events->depth));
            _Note("OnOrderFill", _job->OnOrderFill(events->update));
            _Note("OnProductState", _job->OnProductState(events->state));
            _Note("OnPosition", _job->OnPosition(events->position));
            _Note("OnPriceTradeVolumes", _job->OnPriceTradeVolumes(events->volumes));
        }
        _Note("OnTimer", _job->OnTimer("t"));
        _Note("OnParameter", _job->OnParameter("", "", ""));
        _job->StopJob();
        _Note("OnShutdown", _job->OnShutdown());
    }

    bool _Note(const std::string& entry, const nxErrorEnum& result)
    {
        if (result.IsSuccess()) return true;
        const std::string text = _job->GetErrorText();
        const std::size_t place = text.find("]:");
        _outcome += entry + ": " + (place == std::string::npos ? text : text.substr(place + 2)) + "; ";
        return false;
    }

    nxRecordingHost _host;
    nxTestOrder _order{&_host};
    std::unique_ptr<nxAlgoJobObject> _job = std::make_unique<nxAlgoJobObject>(&_host);
    std::string _outcome;
};

class nxHostile : public testing::TestWithParam<Attack>
{
};

TEST_P(nxHostile, ComesToWhatItSays)
{
    const std::pair<const char*, nxScriptProfile> profiles[] = {{"base", nxScriptProfile::Base},
                                                                {"strict", nxScriptProfile::Strict}};
    for (const auto& [name, profile] : profiles) {
        ASSERT_TRUE(GetParam().outcomes.contains(name)) << GetParam().name;
        const std::string& expected = GetParam().outcomes.at(name);
        if (expected.starts_with("skip")) continue;
        std::string outcome;
        nxStackThread::Run(nxStackThread::ForScripts, [&, profile = profile] {
            outcome = Victim(profile, GetParam().limits).Run(GetParam().script);
        });
        EXPECT_EQ(outcome, expected) << name << ": " << GetParam().name;
    }
}

INSTANTIATE_TEST_SUITE_P(Attacks, nxHostile, testing::ValuesIn(ReadAttacks()),
                         [](const auto& attack) { return "Line" + std::to_string(attack.param.line); });

}  // namespace
