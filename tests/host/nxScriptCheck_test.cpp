#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "host/check/nxDryRun.h"
#include "host/check/nxScriptAnalyzer.h"
#include "host/check/nxScriptCheckTexts.h"
#include "host/check/nxScriptNames.h"
#include "scriptFramework/job/nxCallback.h"

namespace {

// "line:column code" of each finding, in order, joined by ", ".
std::string Analyze(const std::vector<nxScriptAnalysis::File>& files)
{
    nxScriptAnalyzer analyzer;
    std::vector<nxScriptFinding> findings;
    std::string error;
    if (!analyzer.Load(error) || !analyzer.Analyze(files, findings, error)) return error;
    std::ranges::sort(findings);
    std::ostringstream text;
    for (const nxScriptFinding& finding : findings)
        text << (text.tellp() > 0 ? ", " : "") << finding.line << ':' << finding.column << ' '
             << finding.code;
    return text.str();
}

// A product in a local and in a global that OnInit sets, to stand in front of a row.
const std::string Product = "local p function OnInit() p = job:getProduct('A') g = p end\n";

struct Row
{
    std::string text;
    const char* expected;
};

class ScriptCheck : public testing::Test
{
protected:
    void Expect(const std::vector<Row>& rows)
    {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.text);
            EXPECT_EQ(Analyze({{"a.lua", row.text}}), row.expected);
        }
    }
};

}  // namespace

TEST_F(ScriptCheck, FollowsAClassThroughTheScript)
{
    Expect({
        {Product + "function OnPrice() return p.tick, g.tick end",
         "2:29 unknown-property, 2:37 unknown-property"},
        {Product + "function OnPrice() return p:getLeg(1).price.bidprice end", "2:45 unknown-property"},
        {Product + "function OnOrderFill(u) return u.order.product.tick, u.order.state.isFilled end",
         "2:48 unknown-property, 2:68 method-value"},
        {Product + "OnTimer = function(name) return clock.hours, name end", "2:39 unknown-property"},
        {Product + "function OnPrice() for i = 1, p.noLegs do p.leg(i) end end", "2:45 unknown-property"},
        {Product + "function OnVorantJobNew(j) return j.runing, job:getVorantJobs().cont end",
         "2:37 unknown-property, 2:65 unknown-property"},
        {Product + "function OnPrice() list[1]:work{ volume = 1, prise = 2 } end list = {}",
         "2:46 table-key"},
        {Product + "function OnPrice() order = p:createOrder('BUY', 'LIMIT') order:work{ prise = 1 } end",
         "2:70 table-key"},
    });
}

TEST_F(ScriptCheck, SaysNothingOfWhatIsMeantSo)
{
    Expect({
        {Product + "function OnPrice() p = { tick = 1 } return p.tick end", ""},  // two classes
        {Product + "local q = p q = 5 function OnPrice() return q.tick end", ""},
        {Product + "function OnPrice() p.seen = 1 return g.seen end", ""},  // a field of the script's own
        {Product + "local function mark(x) x.seen = 1 end function OnPrice() mark(p) return p.seen end", ""},
        {Product + "local function f(job) return job.anything end function OnPrice() f(p) end", ""},
        {Product + "local a, b = nil, {} function OnPrice() a, b = p, {} return b.anything, a end", ""},
        {Product + "function OnPrice() local say = job.logText say(job, 'x') end", ""},
        {Product + "function OnPrice() pcall(job.logText, job, 'x') job.logText(job, 'x') end", ""},
        {Product + "function OnPrice(price) local price = price.bidPrice job:logText(price) end", ""},
        {Product + "function onPrice(x) return x end function OnPrice(price) onPrice(price) end", ""},
        {Product + "function OnTimer(name, ...) return name, ... end", ""},
        {Product + "local unpack = table.unpack or unpack function OnPrice() return unpack({}) end", ""},
        {Product + "local open = io.open function OnPrice() return open end", ""},  // taken in time
        {Product + "_G.count = 1 function OnPrice() return count end", ""},
        {Product + "function OnPrice() setfenv(1, {}) return anything end", ""},
        {Product + "require 'tools.lists' function OnPrice() return lists end", ""},
        {Product + "function string.trim(s) return s end function OnPrice() return string.trim('x') end", ""},
        {Product + "function OnPrice() local l = vorant.list.new() vorant.list.sort(l) return l.mySize end",
         ""},
        {Product + "function OnPrice() crew:work{ hard = true } end crew = {}", ""},
        {Product + "function OnTickData(t) t.collection:createIndicator{ name='a', type='b', span=3 } end",
         ""},
        {Product + "function OnPrice() return p.tick end -- check:ignore", ""},
        {Product + "function OnPrice() job:startTimer('t', 1) job:getExistingOrder(1, 2) end", ""},
        {"if job then OnInit = print end -- check: ignore", ""},
    });
}

TEST_F(ScriptCheck, TellsWhatTheEngineTakesAndMeansOtherwise)
{
    Expect({
        {"function OnInit() return '\\.' end", "1:27 syntax"},
        {"goto = 1 function OnInit() return goto end", "1:6 syntax"},
        {"function OnInit() os = {} job = nil end", "1:27 overwritten-global"},
        {"function OnInit() end", ""},
        {"function Helper() end", "1:1 no-oninit"},
        {"", "1:1 no-oninit"},
    });
}

// One job: what one file defines another may use, and each finding stands in its own file.
TEST_F(ScriptCheck, TakesTheFilesOfAJobTogether)
{
    EXPECT_EQ(Analyze({{"lib.lua", "function helper() return limit end\n"},
                       {"a.lua", "limit = 1\nfunction OnInit() helper() helpr() end\n"}}),
              "2:28 unknown-global");
}

// What is told beside the bound classes fits them.
TEST(ScriptCheckApi, FollowsTheBoundClasses)
{
    const std::string check = R"(
        local faults = {}
        local function require(condition, ...)
          if not condition then faults[#faults + 1] = table.concat({ ... }, " ") end
        end
        local all = checker.bound
        for name in pairs(all) do
          require(environment.registered[name], name, "is described and not registered")
        end
        for name in pairs(environment.registered) do
          require(all[name], name, "is registered; describe it in nxScriptNames.cpp")
        end
        for name, class in pairs(all) do
          local signatures = checker.signatures[name] or {}
          for member in pairs(class.functions) do
            require(signatures[member], name, member, "has no signature in api.lua")
          end
          for member, signature in pairs(signatures) do
            require(class.functions[member], name, member, "is in api.lua only")
            require(not signature[3] or all[signature[3]], name, member, "gives no class")
          end
          for property, given in pairs(checker.objects[name] or {}) do
            require(class.properties[property] and all[given], name, property, "gives no class")
          end
        end
        for name, arguments in pairs(checker.callbacks) do
          for _, class in ipairs(arguments) do
            require(not class or all[class], name, "is called with no class")
          end
        end
        error(table.concat(faults, "\n"), 0))";
    nxLuaEngine engine;
    for (const std::string& text : {nxScriptCheckApiText(), nxScriptNamesText()})
        ASSERT_TRUE(engine.LoadText(text)) << engine.GetLastError();
    EXPECT_FALSE(engine.LoadText(check));
    EXPECT_EQ(engine.GetLastError(), "");
}

TEST(ScriptCheckApi, KnowsTheCallbacksOfTheEngine)
{
    std::string check = "local count = 0 for _ in pairs(checker.callbacks) do count = count + 1 end\n";
    for (const std::string name : nxCallbackNames)
        check += "assert(checker.callbacks." + name + ", '" + name + "')\n";
    nxLuaEngine engine;
    ASSERT_TRUE(engine.LoadText(nxScriptCheckApiText()));
    EXPECT_TRUE(
        engine.LoadText(check + "assert(count == " + std::to_string(nxCallbackNames.size()) + ", count)"))
        << engine.GetLastError();
}

// Whatever a script may ask of its job and its products in OnInit, it runs through.
TEST(DryRun, AnswersAllThatThisVersionHas)
{
    const std::string path = testing::TempDir() + "nxDryRun.lua";
    std::ofstream(path) << R"(
        function OnInit()
          local p = job:getProduct("ANY")
          assert(p == p and p.name == "ANY" and job:hasContext() and job.selectedSide == "BUY")
          for _, way in ipairs({ "", "Price", "MarketDepth", "Positions", "State", "PriceTradeVolumes" }) do
            p["subscribe" .. way](p)
          end
          local sum = p.price.bidPrice + p.price.lastVolume + p.depth:ask(0) + p.position.totalNet + p.tickSize
          job:setReference("r") job:sendUserLog({ a = 1 }) job:setChartLine("c", "l", sum, 1)
          job:removeChartLine("c", "l") job:setOutputParameter("n", "v") job:startTimer("t", 1) job.tag = "t"
          assert(job:getParameter("n") == nil and job:getDataStore("s") == nil and job:getPandL("USD") == 0)
          local store = job:getDataStore("s", true) store:add("a") assert(job:getDataStore("s").count == 1)
          for i = 0, job:getVorantJobs().count - 1 do job:getVorantJobs():getVorantJob(i).name() end
          job:shutdown()
          print("nothing of this is printed")
        end)";
    nxScriptSource source;
    ASSERT_FALSE(source.Add(path));
    nxDryRun run;
    const auto failure = run.Try(source);
    EXPECT_TRUE(run.HasOnInit());
    EXPECT_FALSE(failure) << failure->message;
}
