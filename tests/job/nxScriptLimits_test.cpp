// What a script that goes beyond its limits comes to, as tests/data/scripts/limits.txt tells it, and what a
// pulse shows of it.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>

#include "base/enums/nxEnumValue.h"
#include "scriptFramework/job/nxAlgoJobObject.h"
#include "tests/support/nxRecordingHost.h"
#include "tests/support/nxRowFile.h"
#include "tests/support/nxSetTime.h"
#include "tests/support/nxTestDataStore.h"
#include "tests/support/nxTestOrder.h"
#include "tests/support/nxTestProduct.h"

namespace {

constexpr const char* Kept =
    "create, resume, wrap = coroutine.create, coroutine.resume, coroutine.wrap "
    "function loop() while true do end end ";

// A job with limits, whose script runs the code of a row where it says.
class Limited
{
public:
    explicit Limited(const std::string& limits)
    {
        for (const char* name : {"A", "B"}) {
            auto product = std::make_unique<nxTestProduct>(&_host, nxGenericProductID(name), 1);
            auto& order = _orders.emplace_back(std::make_unique<nxTestOrder>(&_host, product.get()));
            order->SetStatus(*name == 'A' ? nxOrderStatus_Working : nxOrderStatus_Filled);
            product->order = order.get();
            _host.products[name] = std::move(product);
        }
        _host.dataStore = &_store;
        nxScriptLimits values;
        std::istringstream words(limits);
        for (std::string word; words >> word;) {
            const std::size_t sign = word.find('=');
            if (sign == std::string::npos) _where = word;
            for (const nxScriptLimitRow& row : nxScriptLimitRows)
                if (row.name == word.substr(0, sign)) values.*row.member = std::stoull(word.substr(sign + 1));
        }
        _job.SetLimits(values);
    }

    std::string Run(const std::string& code)
    {
        const auto at = [&](const char* where) {
            return " " + (_where == where ? code : std::string()) + "\n";
        };
        const std::string script =
            Kept + at("main") + "function OnInit()" + at("init") + "end " +
            (at("main").size() > 2 ? "" : "function OnTimer()" + at("timer") + "end ") +
            "function OnShutdown()" + at("shutdown") +
            "job:stopTimer('bye') end function OnJobChanged() job:stopTimer('on') end";
        nxErrorEnum error = _job.LoadScript(script);
        if (error.IsSuccess()) error = _job.StartJob();
        if (error.IsSuccess()) error = _job.OnTimer("x");
        const std::string outcome = _Tell(error);
        if (!_job.IsFunctionDefined("OnShutdown")) return outcome;  // the main chunk never came to it
        EXPECT_TRUE(_job.OnJobChanged().IsSuccess()) << _job.GetErrorText();
        _host.calls.clear();
        error = _job.OnShutdown();
        if (_where == "shutdown") return _Tell(error);
        EXPECT_TRUE(error.IsSuccess()) << _job.GetErrorText();
        EXPECT_EQ(_host.TakeCalls(), "StopTimer(bye)");
        return outcome;
    }

private:
    std::string _Tell(const nxErrorEnum& error)
    {
        if (error.IsSuccess()) return "0";
        std::string text = _job.GetErrorText();
        const std::size_t place = text.find("]:");
        if (place != std::string::npos) text.erase(0, text.find(": ", place) + 2);
        return std::to_string(error.GetValue()) + " " + text;
    }

    nxRecordingHost _host;
    std::vector<std::unique_ptr<nxTestOrder>> _orders;
    nxTestDataStore _store{&_host};
    nxAlgoJobObject _job{&_host};
    std::string _where = "timer";
};

TEST(nxScriptLimits, EachBreachIsToldAndLeavesTheScriptUsable)
{
    for (const nxRow& row : nxReadRows("scripts/limits.txt")) {
        SCOPED_TRACE(row.what);
        const std::size_t bar = row.what.find(" | ");
        EXPECT_EQ(Limited(row.what.substr(0, bar)).Run(row.what.substr(bar + 3)), row.outcome);
    }
}

// The figure takes in what objects hold outside of Lua, and gives it back when they go, as they do after the
// job.
TEST(nxScriptLimits, ObjectsAreChargedForWhatTheyHold)
{
    nxRecordingHost host;
    auto product = std::make_unique<nxTestProduct>(&host, nxGenericProductID("A"), 1);
    nxTestProduct& traded = *product;
    host.products["A"] = std::move(product);
    nxSetTime time(nxTimeStamp{1000, 0});
    {
        nxAlgoJobObject job(&host);
        host.windowJob = &job;
        ASSERT_TRUE(job.LoadScript("function OnInit() s = job:createDataSeries() "
                                   "job:getProduct('A'):createTradeWindow(60, 1):start() end "
                                   "function OnTimer() for i = 1, 1e5 do s:add(i, i) end end")
                        .IsSuccess());
        ASSERT_TRUE(job.StartJob().IsSuccess());
        const auto getGrowth = [&, before = job.GetMemory().GetBytesInUse()] {
            return (job.GetMemory().GetBytesInUse() - before) / 100000;
        };
        ASSERT_TRUE(job.OnTimer("").IsSuccess());
        EXPECT_EQ(getGrowth(), 2 * 8 * 131072 / 100000);
        host.series.clear();
        EXPECT_EQ(getGrowth(), 0u);
        nxPrice trade;
        trade.SetLastPrice(nxDecimal::FromMantissa(100, 0));
        trade.SetLastVolume(1u);
        for (int i = 0; i < 10000; ++i)
            traded.window->OnPrice(trade);
        EXPECT_GE(getGrowth(), 4u);
        time.now = nxTimeStamp{1061, 0};
        traded.window->OnPrice(trade);
        EXPECT_EQ(getGrowth(), 0u);
    }
}

TEST(nxScriptLimits, EachIsDescribed)
{
    std::ifstream file(NX_SOURCE_DIR "/docs/embedding.md");
    const std::string page(std::istreambuf_iterator<char>(file), {});
    for (const nxScriptLimitRow& row : nxScriptLimitRows)
        EXPECT_NE(page.find("| `" + std::string(row.name) + "` | " + std::to_string(row.error) + " | " +
                            row.unit + " | " + row.text + " |\n"),
                  std::string::npos)
            << row.name;
}

// Tells what the pulse shows while the script is in the host.
class PulseHost : public nxRecordingHost
{
public:
    nxScriptPulse pulse;
    void StopTimer(const std::string& name) override
    {
        const char* function = pulse.function;
        calls.push_back(name + ":" + std::to_string(pulse.line) + ":" +
                        (function == nullptr ? "" : function));
        pulse.isStopWanted = name == "stop";
    }
};

TEST(nxScriptLimits, APulseTellsLineAndFunctionAndStops)
{
    PulseHost host;
    nxAlgoJobObject job(&host);
    job.SetPulse(&host.pulse);
    ASSERT_TRUE(job.LoadScript("local function tell(name) job:stopTimer(name) return '' end\n"
                               "function OnInit()\n"
                               "  string.gsub('x', 'x', function()\n"
                               "    table.sort({1, 2}, function() tell('sort') end)\n"
                               "    tell('gsub') end)\n"
                               "  pcall(table.concat, {{}})\n"
                               "  for _ in ('x'):gmatch('x') do tell('gmatch') end\n"
                               "end\n"
                               "function OnTimer()\n"
                               "  tell('stop')\n"
                               "  while true do pcall(tell) end\n"
                               "end")
                    .IsSuccess())
        << job.GetErrorText();
    ASSERT_TRUE(job.StartJob().IsSuccess()) << job.GetErrorText();
    EXPECT_EQ(host.TakeCalls(), "sort:4:table.sort gsub:4:string.gsub gmatch:7:");
    EXPECT_EQ(job.OnTimer(""), nxErrorEnum(nxError_StoppedByHost));
    EXPECT_TRUE(job.GetErrorText().ends_with(": stopped by the host")) << job.GetErrorText();
    host.pulse.isStopWanted = false;
    EXPECT_TRUE(job.OnShutdown().IsSuccess());
}

}  // namespace
